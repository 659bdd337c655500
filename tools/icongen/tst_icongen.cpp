#include "ImageCatalogue.h"
#include "IconPalette.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QSet>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

#include <algorithm>
#include <cstdlib>

namespace {

const QString resourcesDir = QStringLiteral(ICONGEN_RESOURCES_DIR);

const ImageSpec &specNamed(const QString &name)
{
    for (const ImageSpec &spec : ImageCatalogue::all())
        if (spec.fileName == name)
            return spec;
    qFatal("no image named %s", qPrintable(name));
}

struct ResourceEntry
{
    QString alias;
    QString file;
};

// The "file" entries of the resource file, with the prefix they are under.
std::vector<ResourceEntry> resourceEntries(QString &prefix)
{
    QFile file(resourcesDir + QStringLiteral("/images.qrc"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    std::vector<ResourceEntry> entries;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("qresource"))
            prefix = xml.attributes().value(QLatin1String("prefix")).toString();
        else if (xml.name() == QLatin1String("file")) {
            const QString alias = xml.attributes().value(QLatin1String("alias")).toString();
            entries.push_back({alias, xml.readElementText()});
        }
    }
    return xml.hasError() ? std::vector<ResourceEntry>{} : entries;
}

double coveredFraction(const QImage &image)
{
    int covered = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            covered += qAlpha(image.pixel(x, y)) > 0 ? 1 : 0;
    return double(covered) / (image.width() * image.height());
}

// The share of pixels where some channel differs by more than a rounding difference.
double differingFraction(const QImage &a, const QImage &b)
{
    int differing = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            const int delta = std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                        std::abs(qBlue(p) - qBlue(q)), std::abs(qAlpha(p) - qAlpha(q))});
            differing += delta > 16 ? 1 : 0;
        }
    }
    return double(differing) / (a.width() * a.height());
}

} // namespace

class TestIconGen : public QObject
{
    Q_OBJECT

private slots:
    void resourceFileListsEveryImageOnce();
    void imagesHaveTheirSizeAndVisibleContent_data();
    void imagesHaveTheirSizeAndVisibleContent();
    void workspaceLogoTilesSeamlesslyAndStaysCalm();
    void imagesOfOneSizeAreDistinct();
    void registerAndControlIconsShareTheSymbolAndDifferInTheBadge();
    void committedImagesMatchTheDrawings();
    void writeAllWritesEveryImageOrSaysWhyNot();
};

void TestIconGen::resourceFileListsEveryImageOnce()
{
    // Each image must be reachable as ":/images/<file name>": prefix "/images", alias "<file name>".
    QString prefix;
    const std::vector<ResourceEntry> entries = resourceEntries(prefix);
    QCOMPARE(prefix, QStringLiteral("/images"));

    QStringList expected;
    for (const ImageSpec &spec : ImageCatalogue::all())
        expected << spec.fileName;
    QCOMPARE(QSet<QString>(expected.begin(), expected.end()).size(), expected.size());

    QStringList listed;
    for (const ResourceEntry &entry : entries) {
        listed << entry.alias;
        QCOMPARE(entry.file, QStringLiteral("images/") + entry.alias);
        QVERIFY2(QFile::exists(resourcesDir + QLatin1Char('/') + entry.file), qPrintable(entry.file));
    }
    listed.sort();
    expected.sort();
    QCOMPARE(listed, expected);
}

void TestIconGen::imagesHaveTheirSizeAndVisibleContent_data()
{
    QTest::addColumn<QString>("name");
    for (const ImageSpec &spec : ImageCatalogue::all())
        QTest::newRow(qPrintable(spec.fileName)) << spec.fileName;
}

void TestIconGen::imagesHaveTheirSizeAndVisibleContent()
{
    QFETCH(QString, name);
    const ImageSpec &spec = specNamed(name);
    const QImage image = ImageCatalogue::render(spec);
    QCOMPARE(image.size(), spec.size);
    const double covered = coveredFraction(image);
    if (spec.opaque) {
        QCOMPARE(covered, 1.0);
        return;
    }
    const int w = image.width() - 1, h = image.height() - 1;
    for (const QPoint corner : {QPoint(0, 0), QPoint(w, 0), QPoint(0, h), QPoint(w, h)})
        QCOMPARE(qAlpha(image.pixel(corner)), 0);
    QVERIFY2(covered > 0.15 && covered < 0.9, qPrintable(QString::number(covered)));
}

void TestIconGen::workspaceLogoTilesSeamlesslyAndStaysCalm()
{
    const QImage logo = ImageCatalogue::render(specNamed(QStringLiteral("logo_hallmere-700x372.png")));
    const QRgb background = IconPalette::workspace.rgb();
    const int margin = 24;
    int brightest = 0;
    bool hasLogo = false;
    for (int y = 0; y < logo.height(); ++y) {
        for (int x = 0; x < logo.width(); ++x) {
            const QRgb pixel = logo.pixel(x, y);
            const bool border = x < margin || y < margin || x >= logo.width() - margin || y >= logo.height() - margin;
            if (border)
                QCOMPARE(pixel, background);
            hasLogo = hasLogo || pixel != background;
            brightest = std::max(brightest, qGray(pixel));
        }
    }
    QVERIFY(hasLogo);
    QVERIFY2(brightest < 128, qPrintable(QString::number(brightest)));
}

void TestIconGen::imagesOfOneSizeAreDistinct()
{
    const std::vector<ImageSpec> &all = ImageCatalogue::all();
    std::vector<QImage> images;
    for (const ImageSpec &spec : all)
        images.push_back(ImageCatalogue::render(spec));
    for (std::size_t i = 0; i < all.size(); ++i)
        for (std::size_t j = i + 1; j < all.size(); ++j)
            if (all[i].size == all[j].size)
                QVERIFY2(differingFraction(images[i], images[j]) > 0.02,
                         qPrintable(all[i].fileName + QStringLiteral(" ~ ") + all[j].fileName));
}

void TestIconGen::registerAndControlIconsShareTheSymbolAndDifferInTheBadge()
{
    // The badge sits in the lower right corner; everything above and left of it is the kind's symbol.
    const QRect badgeCorner(11, 11, 13, 13);
    auto differsOnlyIn = [](const QImage &a, const QImage &b, const QRect &area) {
        bool differsInside = false;
        for (int y = 0; y < a.height(); ++y) {
            for (int x = 0; x < a.width(); ++x) {
                if (a.pixel(x, y) == b.pixel(x, y))
                    continue;
                if (!area.contains(x, y))
                    return false;
                differsInside = true;
            }
        }
        return differsInside;
    };
    QImage previousRegister;
    for (const char *kind : {"device", "depth", "colour", "audio"}) {
        const QString name = QString::fromLatin1(kind);
        const QImage reg = ImageCatalogue::render(specNamed(name + QStringLiteral("-reg.png")));
        const QImage ctrl = ImageCatalogue::render(specNamed(name + QStringLiteral("-ctrl.png")));
        QVERIFY2(differsOnlyIn(reg, ctrl, badgeCorner), kind);
        // Every kind carries the same register badge.
        if (!previousRegister.isNull())
            QCOMPARE(reg.copy(QRect(15, 15, 6, 6)), previousRegister.copy(QRect(15, 15, 6, 6)));
        previousRegister = reg;
    }
}

void TestIconGen::committedImagesMatchTheDrawings()
{
    for (const ImageSpec &spec : ImageCatalogue::all()) {
        const QString path = resourcesDir + QStringLiteral("/images/") + spec.fileName;
        const QImage committed = QImage(path).convertToFormat(QImage::Format_ARGB32);
        QVERIFY2(!committed.isNull(), qPrintable(path));
        QCOMPARE(committed.size(), spec.size);
        // Text rasterises differently with other font versions; all other images must be what icongen draws.
        if (!spec.usesFonts)
            QVERIFY2(differingFraction(committed, ImageCatalogue::render(spec)) < 0.01,
                     qPrintable(spec.fileName + QStringLiteral(" is stale: run the update-images target")));
    }
}

void TestIconGen::writeAllWritesEveryImageOrSaysWhyNot()
{
    QTemporaryDir temporary;
    QVERIFY(temporary.isValid());
    const QString directory = temporary.filePath(QStringLiteral("out/images"));
    QString errorMessage;
    QVERIFY2(ImageCatalogue::writeAll(directory, errorMessage), qPrintable(errorMessage));
    QCOMPARE(QDir(directory).entryList(QDir::Files).size(), qsizetype(ImageCatalogue::all().size()));
    const ImageSpec &icon = specNamed(QStringLiteral("zr32.png"));
    QCOMPARE(QImage(directory + QStringLiteral("/zr32.png")).convertToFormat(QImage::Format_ARGB32),
             ImageCatalogue::render(icon));

    QFile blocker(temporary.filePath(QStringLiteral("blocker")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    QVERIFY(!ImageCatalogue::writeAll(blocker.fileName() + QStringLiteral("/images"), errorMessage));
    QVERIFY2(errorMessage.contains(QStringLiteral("blocker")), qPrintable(errorMessage));
}

QTEST_MAIN(TestIconGen)
#include "tst_icongen.moc"
