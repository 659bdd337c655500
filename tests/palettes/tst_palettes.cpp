// Palettes: computed grey scales, gradients, the XML loader and its messages, the built-in files,
// and the colouring rules.
#include "palettes/DepthColorizer.h"
#include "palettes/DepthPalette.h"

#include <Zerlane/Utils/HMLogger.h>

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>
#include "support/LogRecorder.h"

#include <mutex>
#include <vector>

namespace {

// The library log, quiet while a test expects warnings.
struct LogCapture : ViewerTest::LogRecorder {
    LogCapture() : LogRecorder(true) {}
};

using PalettePtr = std::unique_ptr<DepthPalette>;

quint32 grey(quint32 g)
{
    return g | g << 8 | g << 16 | 0xFF000000u;
}

// A palette whose every entry is its own index, so colouring shows the index it chose.
DepthPalette identityPalette()
{
    DepthPalette palette("identity", DepthPalette::TableSize);
    for (quint32 i = 0; i < DepthPalette::TableSize; ++i)
        palette.colors()[i] = i;
    return palette;
}

// The floating-point depth rule written out plainly.
quint32 referenceDepthFloatIndex(float v, float range)
{
    if (v >= -0.5f) {
        const float scaled = v * 32767.0f / range;
        if (!(scaled > -2147483904.0f && scaled < 2147483648.0f))
            return 0;
        return quint32(quint16(qint32(scaled)));
    }
    if (v >= -1.5f)
        return 32769;
    if (v >= -2.5f)
        return 32770;
    if (v >= -3.5f)
        return 32771;
    return 32772;
}

} // namespace

class TstPalettes : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();

    void constructionCopyAndEquality();
    void greyScales();
    void oversizedComputedPaletteWarnsAndStaysInTable();
    void rgbGradients();
    void hsvConversion();
    void hsvGradientTurnsOnce();

    void loaderMessages_data();
    void loaderMessages();
    void silentLoaderFailures();
    void loaderAcceptedDocuments();
    void loaderSurvivesGarbage();
    void builtInPalettes();

    void colourSixteenBitMaps();
    void colourDepthMillimetres();
    void colourDepthMetres();
    void colourStandardDeviation();
    void vectorPathsMatchTheRules();

private:
    QByteArray writeFile(const QByteArray& content);
    QTemporaryDir m_dir;
    int m_fileNumber = 0;
};

void TstPalettes::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

QByteArray TstPalettes::writeFile(const QByteArray& content)
{
    const QString path = m_dir.filePath(QStringLiteral("palette%1.xml").arg(++m_fileNumber));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QByteArray();
    file.write(content);
    return QFile::encodeName(path);
}

void TstPalettes::constructionCopyAndEquality()
{
    DepthPalette palette("P", 10);
    QCOMPARE(palette.name(), QByteArray("P"));
    QCOMPARE(palette.size(), 10u);
    for (quint32 i : {0u, 9u, 10u, 65535u})
        QCOMPARE(palette.colors()[i], 0xFF0000FFu);

    DepthPalette copy(palette);
    QVERIFY(copy == palette);
    copy.colors()[65535] = 0;
    QVERIFY(copy != palette);
    copy = palette;
    QVERIFY(copy == palette);
    QVERIFY(DepthPalette("P", 11) != palette);
    QVERIFY(DepthPalette("Q", 10) != palette);
}

void TstPalettes::greyScales()
{
    PalettePtr greyScale(DepthPalette::greyScale(32768));
    QCOMPARE(greyScale->name(), QByteArray("Grey scale"));
    QCOMPARE(greyScale->size(), 32768u);
    QCOMPARE(greyScale->colors()[0], grey(255));
    QCOMPARE(greyScale->colors()[127], grey(255));
    QCOMPARE(greyScale->colors()[128], grey(254));
    QCOMPARE(greyScale->colors()[32767], grey(0));
    QCOMPARE(greyScale->colors()[32768], DepthPalette::Untouched);

    PalettePtr inverted(DepthPalette::invertedGreyScale(32768));
    QCOMPARE(inverted->name(), QByteArray("Inverted grey scale"));
    QCOMPARE(inverted->colors()[0], grey(0));
    QCOMPARE(inverted->colors()[128], grey(1));
    QCOMPARE(inverted->colors()[32767], grey(255));
    QCOMPARE(inverted->colors()[40000], DepthPalette::Untouched);

    // Small sizes: floor(i x 256 / size).
    PalettePtr small(DepthPalette::greyScale(3));
    QCOMPARE(small->colors()[0], grey(255));
    QCOMPARE(small->colors()[1], grey(255 - 85));
    QCOMPARE(small->colors()[2], grey(255 - 170));
    QCOMPARE(small->colors()[3], DepthPalette::Untouched);

    PalettePtr empty(DepthPalette::invertedGreyScale(0));
    QCOMPARE(empty->colors()[0], DepthPalette::Untouched);
}

void TstPalettes::oversizedComputedPaletteWarnsAndStaysInTable()
{
    LogCapture log;
    PalettePtr big(DepthPalette::greyScale(70000));
    QCOMPARE(big->size(), 70000u);
    QCOMPARE(log.warnings(), QStringList{QStringLiteral("Requested palette range too big : 70000")});
    QCOMPARE(big->colors()[65535], grey(255 - 65535u * 256 / 70000));
    PalettePtr exact(DepthPalette::invertedGreyScale(65536));
    QCOMPARE(log.warnings().size(), 1); // 65536 is not too big
    QCOMPARE(exact->colors()[65535], grey(255));
}

void TstPalettes::rgbGradients()
{
    DepthPalette palette("g", 100);
    palette.fillRgbGradient(10, 12, 0x000000, 0x0000FF);
    QCOMPARE(palette.colors()[10], 0xFF000000u);
    QCOMPARE(palette.colors()[11], 0xFF7F0000u); // blue 127
    QCOMPARE(palette.colors()[12], 0xFFFF0000u);
    QCOMPARE(palette.colors()[9], DepthPalette::Untouched);
    QCOMPARE(palette.colors()[13], DepthPalette::Untouched);

    // A falling channel rounds toward the start colour: 255 - 255/2 is 128, not 127.
    palette.fillRgbGradient(20, 22, 0xFF8000, 0x000000);
    QCOMPARE(palette.colors()[21], 0xFF000000u | 128u | 64u << 8);
    QCOMPARE(palette.colors()[22], 0xFF000000u);

    // Red goes in bits 0-7, blue in 16-23.
    palette.fillRgbGradient(30, 31, 0x102030, 0x102030);
    QCOMPARE(palette.colors()[30], 0xFF302010u);

    // A span of one entry takes the start colour; a reversed span writes nothing.
    palette.fillRgbGradient(40, 40, 0x0000FF, 0xFF0000);
    QCOMPARE(palette.colors()[40], 0xFFFF0000u);
    palette.fillRgbGradient(51, 50, 0x0000FF, 0xFF0000);
    QCOMPARE(palette.colors()[50], DepthPalette::Untouched);
    QCOMPARE(palette.colors()[51], DepthPalette::Untouched);

    // Plain fills have alpha 0.
    palette.fill(60, 61, 0xC0C0C0);
    QCOMPARE(palette.colors()[60], 0x00C0C0C0u);
    QCOMPARE(palette.colors()[61], 0x00C0C0C0u);
    palette.fill(65530, 70000, 0x000001);
    QCOMPARE(palette.colors()[65535], 0x00010000u);
}

void TstPalettes::hsvConversion()
{
    QCOMPARE(DepthPalette::hsvToRgb(0.f, 1.f, 1.f), 0x000000FFu);
    QCOMPARE(DepthPalette::hsvToRgb(180.f, 1.f, 1.f), 0x00FFFF00u);
    QCOMPARE(DepthPalette::hsvToRgb(300.f, 1.f, 1.f), 0x00FF00FFu);
    QCOMPARE(DepthPalette::hsvToRgb(360.f, 1.f, 1.f), 0x000000FFu);
    QCOMPARE(DepthPalette::hsvToRgb(360.f, 0.5f, 1.f), 0x007F7FFFu);
    // No saturation is grey; every conversion truncates.
    QCOMPARE(DepthPalette::hsvToRgb(200.f, 0.f, 0.5f), 0x007F7F7Fu);
    // Hue 30: f = 0.5, t = 0.5, so green is trunc(127.5) = 127.
    QCOMPARE(DepthPalette::hsvToRgb(30.f, 1.f, 1.f), 0x00007FFFu);
    // Beyond the circle: black.
    QCOMPARE(DepthPalette::hsvToRgb(400.f, 1.f, 1.f), 0u);
}

void TstPalettes::hsvGradientTurnsOnce()
{
    DepthPalette palette("hsv", 300);
    palette.fillHsvGradient(0, 255, 0x00FFFF, 0xFFFFFF);
    QCOMPARE(palette.colors()[0], 0xFF0000FFu);   // red
    QCOMPARE(palette.colors()[85], 0xFF00FF00u);  // hue 120: green
    QCOMPARE(palette.colors()[170], 0xFFFF0000u); // hue 240: blue
    QCOMPARE(palette.colors()[255], 0xFF0000FFu); // hue 360: red again
    QCOMPARE(palette.colors()[256], DepthPalette::Untouched);
    // Hue 1.41 degrees: still red with a trace of green.
    QCOMPARE(DepthPalette::red(palette.colors()[1]), 255u);
    QVERIFY(DepthPalette::green(palette.colors()[1]) >= 5u && DepthPalette::green(palette.colors()[1]) <= 6u);
    QCOMPARE(DepthPalette::blue(palette.colors()[1]), 0u);

    palette.fillHsvGradient(290, 290, 0x55FFFF, 0x000000);
    QCOMPARE(palette.colors()[290], 0xFF00FF00u);
}

void TstPalettes::loaderMessages_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");

    const auto palette = [](const char* children) {
        return QByteArray("<palette name=\"t\" range=\"5\">") + children + "</palette>";
    };
    QTest::newRow("comment beside the root")
        << QByteArray("<!-- ours --><palette range=\"5\"/>") << "There should be only one root tag";
    QTest::newRow("declaration beside the root")
        << QByteArray("<?xml version=\"1.0\"?>\n<palette range=\"5\"/>") << "There should be only one root tag";
    QTest::newRow("root name") << QByteArray("<colours range=\"5\"/>") << "Root name should be 'palette'";
    QTest::newRow("range text") << QByteArray("<palette range=\"five\"/>")
                                << "Conversion error in 'palette' element's 'range' attribute : five";
    QTest::newRow("range above 16 bits") << QByteArray("<palette range=\"65536\"/>")
                                         << "Conversion error in 'palette' element's 'range' attribute : 65536";
    QTest::newRow("range negative") << QByteArray("<palette range=\"-1\"/>")
                                    << "Conversion error in 'palette' element's 'range' attribute : -1";
    QTest::newRow("range zero") << QByteArray("<palette range=\"0\"/>") << "Palette range was not specified";
    QTest::newRow("range absent") << QByteArray("<palette name=\"n\"/>") << "Palette range was not specified";

    QTest::newRow("gradient ai text") << palette("<gradient ai=\"x\" bi=\"2\" ac=\"0\" bc=\"0\"/>")
                                      << "Conversion error in 'gradient' element's 'ai' attribute : x";
    QTest::newRow("gradient ai absent") << palette("<gradient bi=\"2\" ac=\"0\" bc=\"0\"/>")
                                        << "Conversion error in 'gradient' element's 'ai' attribute : ";
    QTest::newRow("gradient ai range") << palette("<gradient ai=\"6\" bi=\"2\" ac=\"0\" bc=\"0\"/>")
                                       << "'gradient' element's 'ai' attribute out of range : 6";
    QTest::newRow("gradient bi text") << palette("<gradient ai=\"1\" bi=\"2b\" ac=\"0\" bc=\"0\"/>")
                                      << "Conversion error in 'gradient' element's 'bi' attribute : 2b";
    QTest::newRow("gradient bi range") << palette("<gradient ai=\"1\" bi=\"70000\" ac=\"0\" bc=\"0\"/>")
                                       << "'gradient' element's 'bi' attribute out of range : 70000";
    QTest::newRow("gradient ac") << palette("<gradient ai=\"1\" bi=\"2\" ac=\"green\" bc=\"0\"/>")
                                 << "Conversion error in 'color' element's 'ac' attribute : green";
    QTest::newRow("gradient bc") << palette("<gradient ai=\"1\" bi=\"2\" ac=\"0\" bc=\"#ff0000\"/>")
                                 << "Conversion error in 'color' element's 'bc' attribute : #ff0000";

    QTest::newRow("aplat ai text") << palette("<aplat ai=\"one\" bi=\"2\" c=\"0\"/>")
                                   << "Conversion error in 'aplat' element's 'ai' attribute : one";
    QTest::newRow("aplat ai range") << palette("<aplat ai=\"9\" bi=\"2\" c=\"0\"/>")
                                    << "'aplat' element's 'ai' attribute out of range : 9";
    QTest::newRow("aplat bi text") << palette("<aplat ai=\"1\" bi=\"\" c=\"0\"/>")
                                   << "Conversion error in 'color' element's 'bi' attribute : ";
    QTest::newRow("aplat bi range") << palette("<aplat ai=\"1\" bi=\"6\" c=\"0\"/>")
                                    << "'aplat' element's 'bi' attribute out of range : 6";
    QTest::newRow("aplat c, upper case") << palette("<aplat ai=\"1\" bi=\"2\" c=\"ff00zz\"/>")
                                         << "Conversion error in 'color' element's 'c' attribute : FF00ZZ";

    QTest::newRow("color i text") << palette("<color i=\"i\" c=\"0\"/>")
                                  << "Conversion error in 'color' element's 'i' attribute : i";
    QTest::newRow("color i range") << palette("<color i=\"6\" c=\"0\"/>")
                                   << "'color' element's 'i' attribute out of range : 6";
    QTest::newRow("color c") << palette("<color i=\"1\" c=\"red\"/>")
                             << "Conversion error in 'color' element 'c' attribute : red";
    // The first faulty element stops the load, even after good ones.
    QTest::newRow("after good elements") << palette("<color i=\"1\" c=\"ff\"/><aplat ai=\"0\" bi=\"5\" c=\"1\"/>"
                                                    "<gradient ai=\"0\" bi=\"5\" ac=\"0\" bc=\"x\"/>"
                                                    "<color i=\"7\" c=\"0\"/>")
                                         << "Conversion error in 'color' element's 'bc' attribute : x";
}

void TstPalettes::loaderMessages()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    LogCapture log;
    PalettePtr palette(DepthPalette::fromXmlFile(writeFile(content)));
    QVERIFY(!palette);
    QCOMPARE(log.warnings(), QStringList{message});
}

void TstPalettes::silentLoaderFailures()
{
    LogCapture log;
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(m_dir.filePath(QStringLiteral("missing.xml")).toLocal8Bit())));
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(QByteArray())));
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(writeFile(QByteArray()))));
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(writeFile("<palette range=\"5\">"))));
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(writeFile("<a/><palette range=\"5\"/>"))));
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(QFile::encodeName(m_dir.path()))));
    QCOMPARE(log.warnings(), QStringList());
}

void TstPalettes::loaderAcceptedDocuments()
{
    LogCapture log;
    // Root element and its attribute names in any case; the default name.
    PalettePtr upper(DepthPalette::fromXmlFile(writeFile("<PALETTE NAME=\"Loud\" RANGE=\"5\"/>")));
    QVERIFY(upper);
    QCOMPARE(upper->name(), QByteArray("Loud"));
    QCOMPARE(upper->size(), 6u);
    PalettePtr unnamed(DepthPalette::fromXmlFile(writeFile("<Palette range=\"65535\" other=\"x\"/>")));
    QVERIFY(unnamed);
    QCOMPARE(unnamed->name(), QByteArray("Unnamed XML Palette"));
    QCOMPARE(unnamed->size(), 65536u);
    QCOMPARE(unnamed->colors()[0], DepthPalette::Untouched);

    PalettePtr p(DepthPalette::fromXmlFile(writeFile(
        "<palette name=\"rules\" range=\"20\">\n"
        "  <!-- comments and unknown elements are skipped -->\n"
        "  <stripe ai=\"x\"/>\n"
        "  <Gradient ai=\"10\" bi=\"12\" ac=\"000000\" bc=\"0000ff\" MODE=\"hsv\"/>\n"
        "  <color i=\"20\" c=\"abcdef\"/>\n"
        "  <aplat ai=\"3\" bi=\"5\" c=\"010203\"/>\n"
        "  <aplat ai=\"5\" bi=\"4\" c=\"ffffff\"/>\n"
        "  <gradient ai=\"8\" bi=\"7\" ac=\"ffffff\" bc=\"ffffff\"/>\n"
        "  <gradient ai=\"15\" bi=\"15\" ac=\"112233\" bc=\"ffffff\"/>\n"
        "  <gradient ai=\"0\" bi=\"1\" ac=\"0\" bc=\"ffffff\" mode=\"HSV\"/>\n"
        "  <color i=\"4\" c=\"0\"/>\n"
        "</palette>")));
    QVERIFY(p);
    QCOMPARE(log.warnings(), QStringList());
    QCOMPARE(p->name(), QByteArray("rules"));
    QCOMPARE(p->size(), 21u);
    // Attribute names of child elements are exact: "MODE" is not "mode", so this one is RGB.
    QCOMPARE(p->colors()[10], 0xFF000000u);
    QCOMPARE(p->colors()[11], 0xFF7F0000u);
    QCOMPARE(p->colors()[12], 0xFFFF0000u);
    QCOMPARE(p->colors()[20], 0x00EFCDABu); // index equal to range is accepted, alpha 0
    QCOMPARE(p->colors()[3], 0x00030201u);
    QCOMPARE(p->colors()[4], 0u); // later elements overwrite
    QCOMPARE(p->colors()[5], 0x00030201u);
    QCOMPARE(p->colors()[7], DepthPalette::Untouched);
    QCOMPARE(p->colors()[8], DepthPalette::Untouched);
    QCOMPARE(p->colors()[15], 0xFF332211u);
    // HSV with value 0 is black, value 255 at hue 360 is red.
    QCOMPARE(p->colors()[0], 0xFF000000u);
    QCOMPARE(p->colors()[1], 0xFF0000FFu);
    QCOMPARE(p->colors()[21], DepthPalette::Untouched);
}

void TstPalettes::loaderSurvivesGarbage()
{
    LogCapture log;
    const QByteArray cases[] = {
        "<palette range=\" 12\"/>",
        "<palette range=\"12abc\"/>",
        "<palette range=\"abc12\"/>",
        "<palette range=\"99999999999999999999999\"/>",
        "<palette range=\"65535\"><gradient ai=\"0\" bi=\"65535\" ac=\"ffffffffff\" bc=\"0\"/></palette>",
        "<palette range=\"65535\"><gradient ai=\"-1\" bi=\"65535\" ac=\"0\" bc=\"0\"/></palette>",
        "<palette range=\"65535\"><gradient ai=\"0\" bi=\"65535\" ac=\"ffffffff\" bc=\"0\" mode=\"hsv\"/></palette>",
        "<palette range=\"65535\"><aplat ai=\"0\" bi=\"4294967296\" c=\"0\"/></palette>",
        "<palette range=\"65535\"><color i=\"+5\" c=\"0x10\"/></palette>",
        "<palette range=\"1\"><gradient ai=\"1\" bi=\"1\" ac=\"0\" bc=\"0\"/></palette>",
    };
    for (const QByteArray& content : cases)
        PalettePtr(DepthPalette::fromXmlFile(writeFile(content)));

    QRandomGenerator random(1234);
    for (int round = 0; round < 200; ++round) {
        QByteArray bytes(int(random.bounded(1, 400)), Qt::Uninitialized);
        for (char& c : bytes)
            c = char(random.bounded(256));
        if (round % 2)
            bytes.prepend("<palette range=\"100\">"); // garbage inside a plausible root
        PalettePtr(DepthPalette::fromXmlFile(writeFile(bytes)));
    }
    QVERIFY(true);
}

void TstPalettes::builtInPalettes()
{
    LogCapture log;
    PalettePtr close(DepthPalette::fromXmlFile(":/palettes/closepalette.xml"));
    QVERIFY(close);
    QCOMPARE(close->name(), QByteArray("Close range"));
    QCOMPARE(close->size(), 65536u);
    QCOMPARE(close->colors()[0], 0xFF000000u);
    QCOMPARE(close->colors()[1310], 0xFF0000FFu);
    QCOMPARE(close->colors()[17040], 0xFF0000FFu); // written twice: the second gradient's red start wins
    QCOMPARE(close->colors()[32768], 0x00000000u);
    QCOMPARE(close->colors()[32769], 0x00404040u);
    QCOMPARE(close->colors()[32772], 0x00FFFFFFu);
    QCOMPARE(close->colors()[40000], 0x000000FFu);

    PalettePtr normal(DepthPalette::fromXmlFile(":/palettes/palette.xml"));
    QVERIFY(normal);
    QCOMPARE(normal->name(), QByteArray("Normal range"));
    QCOMPARE(normal->size(), 65536u);
    QCOMPARE(normal->colors()[18570], 0xFF0000FFu);
    QVERIFY(*normal != *close);
    QCOMPARE(log.warnings(), QStringList());

    // The files are byte for byte as designed: tabs, two indented lines, no final line break.
    QFile file(QStringLiteral(":/palettes/closepalette.xml"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QVERIFY(text.startsWith("<Palette name=\"Close range\" range=\"65535\">\n\t<gradient ai=\"0\""));
    QVERIFY(text.contains("\n    <color i=\"32771\" c=\"C0C0C0\" />\n    <color i=\"32772\""));
    QVERIFY(text.endsWith("c=\"ff0000\" />\n</Palette>"));
}

void TstPalettes::colourSixteenBitMaps()
{
    const DepthPalette palette = identityPalette();
    const uint16_t src[] = {0, 1, 32768, 0x8001, 0x8002, 0x8003, 0x8004, 0xFFFF};
    uint32_t dst[8];
    DepthColorizer::colorize16(src, dst, 8, palette);
    for (int i = 0; i < 8; ++i)
        QCOMPARE(dst[i], uint32_t(src[i]));
}

void TstPalettes::colourDepthMillimetres()
{
    const DepthPalette palette = identityPalette();
    QCOMPARE(DepthColorizer::depthScaleFactor(1.f), 8388);
    QCOMPARE(DepthColorizer::depthScaleFactor(3.5f), 2396);
    QCOMPARE(DepthColorizer::depthScaleFactor(0.f), 0);
    QCOMPARE(DepthColorizer::depthScaleFactor(1e-9f), 0);

    const int16_t src[] = {0, 1000, 32000, 32001, 32002, 32003, 32004, 32767, -1, -32768, 500};
    uint32_t dst[11];
    DepthColorizer::colorizeDepth(src, dst, 11, palette, 1.f);
    QCOMPARE(dst[0], 0u);
    QCOMPARE(dst[1], 32765u);                  // the range lands mid-table
    QCOMPARE(dst[2], (32000u * 8388u >> 8) & 0xFFFF); // 32000 is still scaled
    QCOMPARE(dst[3], 32769u);
    QCOMPARE(dst[4], 32770u);
    QCOMPARE(dst[5], 32771u);
    QCOMPARE(dst[6], 32772u);
    QCOMPARE(dst[7], 32772u);
    QCOMPARE(dst[8], 65503u); // (-8388 >> 8) = -33, cut to 16 bits
    QCOMPARE(dst[9], uint32_t((qint64(-32768) * 8388 >> 8) & 0xFFFF));
    QCOMPARE(dst[10], uint32_t(500 * 8388 >> 8));

    // A tiny range has a factor beyond 16 bits: only bits 8..23 of the product count.
    const int16_t far[] = {30000, -30000};
    const int32_t f = DepthColorizer::depthScaleFactor(0.05f);
    QCOMPARE(f, 167767);
    DepthColorizer::colorizeDepth(far, dst, 2, palette, 0.05f);
    QCOMPARE(dst[0], uint32_t((qint64(30000) * f >> 8) & 0xFFFF));
    QCOMPARE(dst[1], uint32_t((qint64(-30000) * f >> 8) & 0xFFFF));

    // No range: every measured value takes entry 0, special values keep their entries.
    DepthColorizer::colorizeDepth(src, dst, 11, palette, 0.f);
    QCOMPARE(dst[1], 0u);
    QCOMPARE(dst[3], 32769u);
}

void TstPalettes::colourDepthMetres()
{
    const DepthPalette palette = identityPalette();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const struct {
        float value;
        uint32_t index;
    } cases[] = {
        {0.f, 0},           {1.f, 32767},       {2.f, 65534},        {3.f, 98301 & 0xFFFF},
        {0.5f, 16383},      {-0.5f, 49153},     {-0.50001f, 32769},  {-1.f, 32769},
        {-1.5f, 32769},     {-1.5001f, 32770},  {-2.5f, 32770},      {-2.6f, 32771},
        {-3.5f, 32771},     {-3.5001f, 32772},  {-1000.f, 32772},    {nan, 32772},
        {-inf, 32772},      {inf, 0},           {1e10f, 0},
    };
    for (const auto& c : cases) {
        uint32_t out = 0xDEAD;
        DepthColorizer::colorizeDepthFloat(&c.value, &out, 1, palette, 1.f);
        QVERIFY2(out == c.index, qPrintable(QStringLiteral("%1 -> %2").arg(double(c.value)).arg(out)));
    }
    // The range divides after the multiplication.
    const float v = 1.75f;
    uint32_t out = 0;
    DepthColorizer::colorizeDepthFloat(&v, &out, 1, palette, 3.5f);
    QCOMPARE(out, uint32_t(qint32(v * 32767.0f / 3.5f)));
}

void TstPalettes::colourStandardDeviation()
{
    const DepthPalette palette = identityPalette();
    const float src[] = {0.f, 0.25f, 0.5f, 0.001f, -0.001f, 1.f};
    uint32_t dst[6];
    DepthColorizer::colorizeStandardDeviation(src, dst, 6, palette, 1.f);
    QCOMPARE(dst[0], 0u);
    QCOMPARE(dst[1], 32767u);
    QCOMPARE(dst[2], 65534u);
    QCOMPARE(dst[3], 131u);
    QCOMPARE(dst[4], uint32_t(quint16(-131)));
    QCOMPARE(dst[5], uint32_t(131068 & 0xFFFF));
    DepthColorizer::colorizeStandardDeviation(src, dst, 6, palette, 4.f);
    QCOMPARE(dst[2], uint32_t(qint32(0.5f * (32767.0f / 4.f) * 4.f)));
}

void TstPalettes::vectorPathsMatchTheRules()
{
    // Long runs (several chunks, an odd tail) of random and special values against the plain rules.
    const DepthPalette palette = identityPalette();
    QRandomGenerator random(99);
    const int count = 3001;
    std::vector<float> metres(count);
    for (int i = 0; i < count; ++i) {
        switch (i % 5) {
        case 0:
            metres[i] = -float(random.bounded(1, 5)); // special codes
            break;
        case 1:
            metres[i] = float(random.generateDouble() * -5.0);
            break;
        default:
            metres[i] = float(random.generateDouble() * 12.0);
        }
    }
    std::vector<int16_t> millimetres(count);
    for (int i = 0; i < count; ++i)
        millimetres[i] = i % 7 == 0 ? int16_t(31998 + random.bounded(8)) : int16_t(random.bounded(-32768, 32768));
    millimetres[3] = -32768;
    millimetres[4] = 32767;
    for (float range : {0.05f, 0.2f, 1.f, 3.5f, 7.f, -2.f}) {
        std::vector<uint32_t> depth(count);
        DepthColorizer::colorizeDepth(millimetres.data(), depth.data(), count, palette, range);
        const qint64 f = DepthColorizer::depthScaleFactor(range);
        for (int i = 0; i < count; ++i) {
            const int v = millimetres[i];
            const uint32_t expected = v > 32000 ? (v >= 32004 ? 32772u : uint32_t(32768 + v - 32000))
                                                : uint32_t((qint64(v) * f >> 8) & 0xFFFF);
            QCOMPARE(depth[i], expected);
        }
    }

    metres[7] = std::numeric_limits<float>::quiet_NaN();
    metres[8] = 1e30f;
    for (float range : {0.6f, 1.f, 3.5f, 7.f}) {
        std::vector<uint32_t> depth(count), deviation(count);
        DepthColorizer::colorizeDepthFloat(metres.data(), depth.data(), count, palette, range);
        DepthColorizer::colorizeStandardDeviation(metres.data(), deviation.data(), count, palette, range);
        const float scale = 32767.0f / range;
        for (int i = 0; i < count; ++i) {
            QCOMPARE(depth[i], referenceDepthFloatIndex(metres[i], range));
            const float stretched = metres[i] * scale * 4.0f;
            const uint32_t expected = (stretched > -2147483904.0f && stretched < 2147483648.0f)
                                          ? uint32_t(quint16(qint32(stretched)))
                                          : 0u;
            QCOMPARE(deviation[i], expected);
        }
    }
}

QTEST_APPLESS_MAIN(TstPalettes)
#include "tst_palettes.moc"
