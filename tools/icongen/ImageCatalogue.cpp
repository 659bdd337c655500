#include "ImageCatalogue.h"

#include "ExportIcons.h"
#include "KindSymbols.h"
#include "LogoImages.h"
#include "NodeActionIcons.h"
#include "StreamingIcons.h"
#include "ViewIcons.h"

#include <QDir>
#include <QPainter>

namespace ImageCatalogue {
namespace {

using KindSymbols::Kind;

const QSize treeSize(16, 16);
const QSize toolSize(24, 24);

ImageSpec image(const char *name, QSize size, std::function<void(QPainter &)> paint)
{
    return ImageSpec{QString::fromLatin1(name), size, std::move(paint)};
}

void addTreeIcons(std::vector<ImageSpec> &images)
{
    const std::pair<const char *, Kind> kinds[] = {{"device.png", Kind::Device},
                                                   {"depth.png", Kind::Depth},
                                                   {"colour.png", Kind::Colour},
                                                   {"audio.png", Kind::Audio},
                                                   {"unsupported.png", Kind::Unsupported}};
    for (const auto &[name, kind] : kinds)
        images.push_back(image(name, treeSize, [kind](QPainter &p) { KindSymbols::draw(p, kind); }));
}

void addNodeActionIcons(std::vector<ImageSpec> &images)
{
    const std::pair<const char *, Kind> kinds[] = {
        {"depth", Kind::Depth}, {"colour", Kind::Colour}, {"audio", Kind::Audio}, {"device", Kind::Device}};
    for (const auto &[prefix, kind] : kinds) {
        const QString base = QString::fromLatin1(prefix);
        images.push_back(ImageSpec{base + QStringLiteral("-reg.png"), toolSize,
                                   [kind](QPainter &p) { NodeActionIcons::drawRegister(p, kind); }});
        images.push_back(ImageSpec{base + QStringLiteral("-ctrl.png"), toolSize,
                                   [kind](QPainter &p) { NodeActionIcons::drawControl(p, kind); }});
    }
}

void addViewIcons(std::vector<ImageSpec> &images)
{
    using ViewIcons::Face;
    const std::pair<const char *, Face> faces[] = {{"view-front.png", Face::Front},
                                                   {"view-left.png", Face::Left},
                                                   {"view-right.png", Face::Right},
                                                   {"view-top.png", Face::Top},
                                                   {"view-bottom.png", Face::Bottom}};
    for (const auto &[name, face] : faces)
        images.push_back(image(name, toolSize, [face](QPainter &p) { ViewIcons::drawCube(p, face); }));
}

std::vector<ImageSpec> buildCatalogue()
{
    std::vector<ImageSpec> images;
    images.push_back(image("zr32.png", QSize(32, 32), LogoImages::drawApplicationIcon));
    ImageSpec workspace = image("logo_hallmere-700x372.png", QSize(700, 372), LogoImages::drawWorkspaceLogo);
    workspace.opaque = true;
    workspace.usesFonts = true;
    images.push_back(workspace);
    ImageSpec about = image("logo_hallmere-170x45.png", QSize(170, 45), LogoImages::drawSmallLogo);
    about.usesFonts = true;
    images.push_back(about);

    addTreeIcons(images);
    addNodeActionIcons(images);

    images.push_back(image("play.png", toolSize, StreamingIcons::drawPlay));
    images.push_back(image("pause.png", toolSize, StreamingIcons::drawPause));
    images.push_back(image("stop.png", toolSize, StreamingIcons::drawStop));
    images.push_back(image("status-play.png", toolSize, StreamingIcons::drawStatusStreaming));
    images.push_back(image("status-frozen.png", toolSize, StreamingIcons::drawStatusFrozen));
    images.push_back(image("status-stop.png", toolSize, StreamingIcons::drawStatusStopped));

    images.push_back(image("export-csv.png", toolSize, ExportIcons::drawExportCsv));
    images.push_back(image("export-qvf.png", toolSize, ExportIcons::drawRecord));
    images.push_back(image("stop-export-qvf.png", toolSize, ExportIcons::drawStopRecording));

    addViewIcons(images);
    return images;
}

} // namespace

const std::vector<ImageSpec> &all()
{
    static const std::vector<ImageSpec> images = buildCatalogue();
    return images;
}

QImage render(const ImageSpec &spec)
{
    QImage canvas(spec.size, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    spec.paint(painter);
    painter.end();
    return canvas.convertToFormat(spec.opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32);
}

bool writeAll(const QString &directory, QString &errorMessage)
{
    QDir dir(directory);
    if (!dir.mkpath(QStringLiteral("."))) {
        errorMessage = QStringLiteral("cannot create the directory %1").arg(directory);
        return false;
    }
    for (const ImageSpec &spec : all()) {
        const QString path = dir.filePath(spec.fileName);
        if (!render(spec).save(path, "PNG")) {
            errorMessage = QStringLiteral("cannot write %1").arg(path);
            return false;
        }
    }
    return true;
}

} // namespace ImageCatalogue
