// The palette loader against whatever a directory may hold: tables as the loader always built them,
// files that are not regular, too large or shaped to make parsing slow, and other encodings.
#include "palettes/DepthPalette.h"
#include "palettes/PaletteFile.h"
#include "palettes/PaletteMarkup.h"
#include "support/LogRecorder.h"

#include <QCryptographicHash>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <random>
#include <vector>

#include <sys/stat.h>

namespace {

using PalettePtr = std::unique_ptr<DepthPalette>;

QByteArray tableHash(const DepthPalette& palette)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(palette.colors()),
                                                     int(DepthPalette::TableSize * sizeof(quint32)));
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

QByteArray nested(int depth)
{
    return "<palette range=\"5\">" + QByteArray("<a>").repeated(depth - 1) + QByteArray("</a>").repeated(depth - 1)
         + "</palette>";
}

QByteArray tagWithAttributes(int count)
{
    QByteArray tag = "<palette range=\"5\"><a";
    for (int i = 0; i < count; ++i)
        tag += " x" + QByteArray::number(i) + "=\"1\"";
    return tag + "/></palette>";
}

} // namespace

class TstPaletteLoader : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void tablesAreAsTheLoaderAlwaysBuiltThem();
    void latestRulesWinEntryByEntry();
    void onlyRegularFilesAreRead();
    void filesAboveTheSizeLimitAreLeftOutWithALogLine();
    void markupThatWouldMakeParsingSlowIsLeftOut();
    void encodingsAreReadAsTheXmlReaderReadsThem();

private:
    QByteArray path(const char* name) const { return QFile::encodeName(m_dir.filePath(QString::fromLatin1(name))); }
    QByteArray write(const char* name, const QByteArray& content)
    {
        QFile file(m_dir.filePath(QString::fromLatin1(name)));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return QByteArray();
        file.write(content);
        return path(name);
    }

    QTemporaryDir m_dir;
};

void TstPaletteLoader::tablesAreAsTheLoaderAlwaysBuiltThem()
{
    // SHA-256 of the tables as the loader built them when it applied every element in turn (the rule
    // behind it is checked on random rules below).
    ViewerTest::LogRecorder log(true);
    PalettePtr normal(DepthPalette::fromXmlFile(":/palettes/palette.xml"));
    PalettePtr close(DepthPalette::fromXmlFile(":/palettes/closepalette.xml"));
    QCOMPARE(tableHash(*normal), QByteArray("59bf8db86ae2c5cc80e2bc10513a6dac71b3ce8a35dc47f64571a24ee9df65f8"));
    QCOMPARE(tableHash(*close), QByteArray("53cfa2b7e073e835b6d64d9104431f6fd611a903a3a9521c58631f63ce17bf05"));
    QCOMPARE(log.warnings(), QStringList());
}

void TstPaletteLoader::latestRulesWinEntryByEntry()
{
    std::mt19937 random(99);
    const auto below = [&](unsigned n) { return unsigned(random() % n); };
    for (int round = 0; round < 30; ++round) {
        std::vector<PaletteRule> rules;
        DepthPalette inOrder("p", 65536);
        for (int i = int(below(60)); i >= 0; --i) {
            const PaletteRule::Kind kind = PaletteRule::Kind(below(3));
            // Some rules reach past the table, some are reversed, some cover one entry.
            const quint32 first = below(10) == 0 ? 65530 + below(20) : below(65536);
            const quint32 last = below(8) == 0 ? first - below(3) : first + below(below(2) ? 40 : 70000);
            const PaletteRule rule{kind, first, last, below(0x1000000), below(0x1000000)};
            rules.push_back(rule);
            if (kind == PaletteRule::RgbGradient)
                inOrder.fillRgbGradient(rule.first, rule.last, rule.startRrggbb, rule.endRrggbb);
            else if (kind == PaletteRule::HsvGradient)
                inOrder.fillHsvGradient(rule.first, rule.last, rule.startRrggbb, rule.endRrggbb);
            else
                inOrder.fill(rule.first, rule.last, rule.startRrggbb);
        }
        DepthPalette latestFirst("p", 65536);
        latestFirst.applyRules(rules);
        QVERIFY2(latestFirst == inOrder, qPrintable(QString("round %1").arg(round)));
    }
}

void TstPaletteLoader::onlyRegularFilesAreRead()
{
    ViewerTest::LogRecorder log(true);
    // A FIFO would block the open until a writer comes; a device never ends.
    QCOMPARE(::mkfifo(path("fifo.xml").constData(), 0600), 0);
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(path("fifo.xml"))));
    QVERIFY(QFile::link("/dev/zero", m_dir.filePath("zero.xml")));
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(path("zero.xml"))));
    QVERIFY(QDir(m_dir.path()).mkdir("folder.xml"));
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(path("folder.xml"))));
    // A link to a regular file is read.
    write("target", "<palette range=\"5\"/>");
    QVERIFY(QFile::link(m_dir.filePath("target"), m_dir.filePath("link.xml")));
    QVERIFY(PalettePtr(DepthPalette::fromXmlFile(path("link.xml"))));
    QCOMPARE(log.warnings(), QStringList());
}

void TstPaletteLoader::filesAboveTheSizeLimitAreLeftOutWithALogLine()
{
    ViewerTest::LogRecorder log(true);
    const QByteArray head = "<palette name=\"big\" range=\"5\">", tail = "</palette>";
    const QByteArray atLimit = head + QByteArray(int(PaletteFile::MaxBytes) - head.size() - tail.size(), ' ') + tail;
    QVERIFY(PalettePtr(DepthPalette::fromXmlFile(write("limit.xml", atLimit))));
    QCOMPARE(log.warnings(), QStringList());

    const QByteArray over = head + QByteArray(int(PaletteFile::MaxBytes) - head.size() - tail.size() + 1, ' ') + tail;
    const QByteArray file = write("over.xml", over);
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(file)));
    QCOMPARE(log.warnings(), QStringList{QString("Palette file %1 is larger than 1048576 bytes, left out")
                                             .arg(QString::fromLocal8Bit(file))});
}

void TstPaletteLoader::markupThatWouldMakeParsingSlowIsLeftOut()
{
    ViewerTest::LogRecorder log(true);
    // The palette element counts as the first level.
    QVERIFY(PalettePtr(DepthPalette::fromXmlFile(write("deep64.xml", nested(PaletteMarkup::MaxDepth)))));
    QVERIFY(PalettePtr(DepthPalette::fromXmlFile(write("wide64.xml", tagWithAttributes(PaletteMarkup::MaxAttributes)))));
    // Markup characters inside comments, quoted values and processing instructions are no markup.
    QVERIFY(PalettePtr(DepthPalette::fromXmlFile(write("quoted.xml",
        "<palette range=\"5\" name=\"a=b>[c]\"><!-- <a x=1 y=2 z=3> " + QByteArray("<b>").repeated(100)
        + " --><?pi " + QByteArray("x=").repeated(100) + "?><![CDATA[" + QByteArray("<c>").repeated(100)
        + "]]><color i='1' c='0'/></palette>"))));
    QVERIFY(PalettePtr(DepthPalette::fromXmlFile(write("doctype.xml",
        "<!DOCTYPE palette SYSTEM \"palette[1].dtd\"><palette range=\"5\"/>"))));
    QCOMPARE(log.warnings(), QStringList());

    const QByteArray deep = write("deep.xml", nested(140000));
    const QByteArray deep65 = write("deep65.xml", nested(PaletteMarkup::MaxDepth + 1));
    const QByteArray wide = write("wide.xml", tagWithAttributes(90000));
    const QByteArray entities = write("entities.xml",
        "<!DOCTYPE palette [<!ENTITY e \"<a><a><a></a></a></a>\">]><palette range=\"5\">&e;</palette>");
    const QByteArray defaults = write("defaults.xml",
        "<!DOCTYPE palette [<!ATTLIST a x CDATA \"1\">]><palette range=\"5\"><a/></palette>");
    for (const QByteArray& file : {deep, deep65, wide, entities, defaults})
        QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(file)));
    const auto name = [](const QByteArray& file) { return QString::fromLocal8Bit(file); };
    QCOMPARE(log.warnings(), (QStringList{
        QString("Palette file %1 nests elements more than 64 deep, left out").arg(name(deep)),
        QString("Palette file %1 nests elements more than 64 deep, left out").arg(name(deep65)),
        QString("Palette file %1 has a tag with more than 64 attributes, left out").arg(name(wide)),
        QString("Palette file %1 declares entities or attributes in a DTD, left out").arg(name(entities)),
        QString("Palette file %1 declares entities or attributes in a DTD, left out").arg(name(defaults)),
    }));
}

void TstPaletteLoader::encodingsAreReadAsTheXmlReaderReadsThem()
{
    ViewerTest::LogRecorder log(true);
    const QString text = QStringLiteral("<palette name=\"Caf\u00e9\" range=\"9\"><color i=\"3\" c=\"123456\"/></palette>");
    PalettePtr utf8(DepthPalette::fromXmlFile(write("utf8.xml", text.toUtf8())));
    QVERIFY(utf8);
    QCOMPARE(utf8->name(), QByteArray("Caf\xc3\xa9"));

    QByteArray utf16("\xff\xfe", 2);
    utf16 += QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    PalettePtr fromUtf16(DepthPalette::fromXmlFile(write("utf16.xml", utf16)));
    QVERIFY(fromUtf16);
    QVERIFY(*fromUtf16 == *utf8);

    const QByteArray latin1 = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + text.toLatin1();
    QCOMPARE(PaletteMarkup::decode(latin1), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + text);
    // Bytes that are not UTF-8, undeclared: nothing, as the reader refuses them.
    QVERIFY(!PalettePtr(DepthPalette::fromXmlFile(write("bad.xml", text.toLatin1()))));
    QCOMPARE(log.warnings(), QStringList());
}

QTEST_APPLESS_MAIN(TstPaletteLoader)
#include "tst_paletteloader.moc"
