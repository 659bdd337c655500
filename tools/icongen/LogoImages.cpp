#include "LogoImages.h"

#include "IconPalette.h"
#include "Shapes.h"

#include <QFont>
#include <QPainter>
#include <QtMath>

using namespace IconPalette;
using Shapes::fillOutlined;

namespace LogoImages {
namespace {

// A bold "Z" as one outline, so that the icon does not depend on the installed fonts.
QPainterPath zLetter(const QRectF &box, qreal bar)
{
    return Shapes::polygon({box.topLeft(),
                            box.topRight(),
                            {box.right(), box.top() + bar},
                            {box.left() + bar * 1.45, box.bottom() - bar},
                            {box.right(), box.bottom() - bar},
                            box.bottomRight(),
                            box.bottomLeft(),
                            {box.left(), box.bottom() - bar},
                            {box.right() - bar * 1.45, box.top() + bar},
                            {box.left(), box.top() + bar}});
}

QPainterPath wavyLine(QPointF from, qreal length, qreal amplitude, qreal periods)
{
    QPainterPath wave;
    const int steps = 64;
    wave.moveTo(from);
    for (int step = 1; step <= steps; ++step) {
        const qreal t = qreal(step) / steps;
        wave.lineTo(from + QPointF(length * t, -amplitude * qSin(2.0 * M_PI * periods * t)));
    }
    return wave;
}

// The company mark, for "hall" and "mere": on a disc, the arch of a hall with the sun under it, above the
// waves of a lake.
void drawHallmereMark(QPainter &painter, QPointF centre, qreal radius, const QColor &disc, const QColor &glyph,
                      const QColor &sun)
{
    fillOutlined(painter, Shapes::circle(centre, radius), disc, disc, 0);
    const qreal stroke = 0.13 * radius;
    const qreal archRadius = 0.42 * radius, archBase = 0.12 * radius, archTop = -0.10 * radius;
    QPainterPath arch;
    arch.moveTo(centre + QPointF(-archRadius, archBase));
    arch.lineTo(centre + QPointF(-archRadius, archTop));
    arch.arcTo(QRectF(centre + QPointF(-archRadius, archTop - archRadius), QSizeF(2 * archRadius, 2 * archRadius)),
               180.0, -180.0);
    arch.lineTo(centre + QPointF(archRadius, archBase));
    Shapes::strokeLine(painter, arch, glyph, stroke);
    fillOutlined(painter, Shapes::circle(centre + QPointF(0.0, archTop + 0.02 * radius), 0.17 * radius), sun, sun,
                 0);

    const qreal waveHalfWidth = 0.56 * radius;
    for (qreal y : {0.34, 0.58}) {
        const qreal halfWidth = y < 0.5 ? waveHalfWidth : 0.8 * waveHalfWidth;
        Shapes::strokeLine(painter,
                           wavyLine(centre + QPointF(-halfWidth, y * radius), 2.0 * halfWidth, 0.05 * radius,
                                    halfWidth / waveHalfWidth * 1.5),
                           glyph, stroke * 0.85);
    }
}

QFont logoFont(int pixelSize, QFont::Weight weight, qreal letterSpacing)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    font.setLetterSpacing(QFont::AbsoluteSpacing, letterSpacing);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

// Draws the text with its left end at x and its visual middle at y.
void drawTextAt(QPainter &painter, const QString &text, const QFont &font, qreal x, qreal middleY,
                const QColor &colour)
{
    QPainterPath path;
    path.addText(0.0, 0.0, font, text);
    const QRectF bounds = path.boundingRect();
    path.translate(x - bounds.left(), middleY - bounds.center().y());
    fillOutlined(painter, path, colour, colour, 0);
}

qreal textWidth(const QString &text, const QFont &font)
{
    QPainterPath path;
    path.addText(0.0, 0.0, font, text);
    return path.boundingRect().width();
}

// The largest font up to maxPixelSize in which the text fits the width.
QFont fittedFont(const QString &text, qreal width, int maxPixelSize, QFont::Weight weight, qreal letterSpacing)
{
    int pixelSize = maxPixelSize;
    while (pixelSize > 6 && textWidth(text, logoFont(pixelSize, weight, letterSpacing)) > width)
        --pixelSize;
    return logoFont(pixelSize, weight, letterSpacing);
}

} // namespace

void drawApplicationIcon(QPainter &painter)
{
    fillOutlined(painter, Shapes::roundedRect(QRectF(8.5, 0.5, 23.0, 23.0), 4.0), brandLight, brand);
    fillOutlined(painter, Shapes::roundedRect(QRectF(4.5, 4.5, 23.0, 23.0), 4.0), brand, brandDeep);
    fillOutlined(painter, Shapes::roundedRect(QRectF(0.5, 8.5, 23.0, 23.0), 4.0), brandDeep, ink);
    fillOutlined(painter, zLetter(QRectF(5.0, 13.0, 14.0, 14.0), 3.2), paper, paper, 0);
    fillOutlined(painter, Shapes::circle(QPointF(27.0, 5.0), 2.2), accent, accent, 0);
}

void drawWorkspaceLogo(QPainter &painter)
{
    painter.fillRect(QRectF(0, 0, 700, 372), workspace);
    const QFont nameFont = logoFont(62, QFont::Bold, 1.0);
    const QString name = QStringLiteral("Hallmere");
    const qreal markRadius = 46.0, gap = 26.0;
    const qreal totalWidth = 2.0 * markRadius + gap + textWidth(name, nameFont);
    const qreal left = (700.0 - totalWidth) / 2.0;
    const qreal middleY = 166.0;
    drawHallmereMark(painter, QPointF(left + markRadius, middleY), markRadius, workspaceMark, workspace,
                     QColor(0x7a, 0x5c, 0x3e));
    drawTextAt(painter, name, nameFont, left + 2.0 * markRadius + gap, middleY, workspaceText);

    const QFont productFont = logoFont(24, QFont::Normal, 6.0);
    const QString product = QStringLiteral("ZERLANE VIEWER");
    drawTextAt(painter, product, productFont, (700.0 - textWidth(product, productFont)) / 2.0, 252.0,
               workspaceSubtext);
}

void drawSmallLogo(QPainter &painter)
{
    const qreal markRadius = 18.0, textLeft = 2.0 * markRadius + 12.0;
    const QString name = QStringLiteral("Hallmere");
    drawHallmereMark(painter, QPointF(4.0 + markRadius, 22.5), markRadius, brand, paper, accent);
    drawTextAt(painter, name, fittedFont(name, 170.0 - textLeft - 3.0, 30, QFont::Bold, 0.5), textLeft, 22.5,
               brandDeep);
}

} // namespace LogoImages
