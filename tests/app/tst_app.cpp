// Text utilities and the YUY2 conversion.
#include "app/shared/TextUtils.h"
#include "app/shared/YuvConverter.h"

#include <QtTest>

#include <algorithm>
#include <vector>

class TstApp : public QObject {
    Q_OBJECT
private slots:
    void specialValueTexts();
    void powerLineFrequencyTexts();
    void unsignedTimeTexts_data();
    void unsignedTimeTexts();
    void signedTimeTexts();
    void yuy2MatchesBt601ForEveryValue();
    void yuy2VectorPathMatchesTableAtEveryLength();
    void bgrCopy();
};

void TstApp::specialValueTexts()
{
    const char* reasons[] = {"Low confidence", "Saturated", "Aliased", "Kamikaze"};
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(specialValueTextPhase(32769 + i), QString::fromLatin1(reasons[i]));
        QCOMPARE(specialValueTextDepth(32001 + i), QString::fromLatin1(reasons[i]));
        QCOMPARE(specialValueTextFloat(-1.f - float(i)), QString::fromLatin1(reasons[i]));
    }
    // The codes of one variant mean nothing to the other.
    QCOMPARE(specialValueTextPhase(32001), QStringLiteral("Unknown (32001)"));
    QCOMPARE(specialValueTextDepth(32769), QStringLiteral("Unknown (-32767)"));
    QCOMPARE(specialValueTextDepth(32005), QStringLiteral("Unknown (32005)"));
    QCOMPARE(specialValueTextDepth(32000), QStringLiteral("Unknown (32000)"));
    QCOMPARE(specialValueTextPhase(32773), QStringLiteral("Unknown (-32763)"));
    QCOMPARE(specialValueTextDepth(40000), QStringLiteral("Unknown (-25536)"));
    QCOMPARE(specialValueTextPhase(0), QStringLiteral("Unknown (0)"));
    // Only the low 16 bits count.
    QCOMPARE(specialValueTextPhase(0x10000 + 32770), QStringLiteral("Saturated"));
    QCOMPARE(specialValueTextDepth(0xFFFF0000u + 32003), QStringLiteral("Aliased"));
    QCOMPARE(specialValueTextDepth(0x1FFFF), QStringLiteral("Unknown (-1)"));

    QCOMPARE(specialValueTextFloat(-5.f), QStringLiteral("Unknown (-5)"));
    QCOMPARE(specialValueTextFloat(-1.5f), QStringLiteral("Unknown (-1.5)"));
    QCOMPARE(specialValueTextFloat(0.f), QStringLiteral("Unknown (0)"));
    QCOMPARE(specialValueTextFloat(1234567.f), QStringLiteral("Unknown (1.23457e+06)"));
}

void TstApp::powerLineFrequencyTexts()
{
    QCOMPARE(powerLineFrequencyText(0), QStringLiteral("Disabled"));
    QCOMPARE(powerLineFrequencyText(1), QStringLiteral("50Hz"));
    QCOMPARE(powerLineFrequencyText(2), QStringLiteral("60Hz"));
    QCOMPARE(powerLineFrequencyText(3), QStringLiteral("Bad value"));
    QCOMPARE(powerLineFrequencyText(-1), QStringLiteral("Bad value"));
}

void TstApp::unsignedTimeTexts_data()
{
    QTest::addColumn<quint64>("microseconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << quint64(0) << "0.000000";
    QTest::newRow("five us") << quint64(5) << "0.000005";
    QTest::newRow("one and a half s") << quint64(1500000) << "1.500000";
    QTest::newRow("largest positive low word") << quint64(2147483647) << "2147.483647";
    // From 2^31 on, the digits come from the low word read as negative.
    QTest::newRow("2^31") << quint64(2147483648u) << "2147.483648";
    QTest::newRow("3e9") << quint64(3000000000u) << "3000.967296";
    QTest::newRow("2^32") << quint64(4294967296u) << "4294.000000";
    QTest::newRow("2^32 + 1.5 s") << quint64(4294967296u + 1500000u) << "4296.500000";
    QTest::newRow("2^32 - 1") << quint64(4294967295u) << "4294.000001";
    QTest::newRow("max") << ~quint64(0) << "18446744073709.000001";
}

void TstApp::unsignedTimeTexts()
{
    QFETCH(quint64, microseconds);
    QFETCH(QString, text);
    QCOMPARE(timeText(microseconds), text);
}

void TstApp::signedTimeTexts()
{
    QCOMPARE(timeText(qint64(1500000)), QStringLiteral("1.500000"));
    QCOMPARE(timeText(qint64(-1500000)), QStringLiteral("-1.500000"));
    QCOMPARE(timeText(qint64(-2000001)), QStringLiteral("-2.000001"));
    QCOMPARE(timeText(qint64(5)), QStringLiteral("0.000005"));
    QCOMPARE(timeText(qint64(0)), QStringLiteral("0.000000"));
    QCOMPARE(timeText(qint64(4294967296LL)), QStringLiteral("4294.000000"));
}

namespace {

uint8_t clampByte(int value)
{
    return uint8_t(std::clamp(value, 0, 255));
}

// BT.601 straight from the coefficients, for comparison with the tables.
void referencePixel(int y, int u, int v, uint8_t* bgr)
{
    const int c = y - 16, d = u - 128, e = v - 128;
    bgr[0] = clampByte((298 * c + 516 * d + 128) >> 8);
    bgr[1] = clampByte((298 * c - 100 * d - 208 * e + 128) >> 8);
    bgr[2] = clampByte((298 * c + 409 * e + 128) >> 8);
}

} // namespace

void TstApp::yuy2MatchesBt601ForEveryValue()
{
    YuvConverter::initTables();
    // One row per (U, V): 128 groups whose two lumas run through all 256 values.
    const int width = 256, height = 256 * 256;
    std::vector<uint8_t> src(size_t(width) * height * 2);
    size_t at = 0;
    for (int u = 0; u < 256; ++u)
        for (int v = 0; v < 256; ++v)
            for (int y = 0; y < 256; y += 2) {
                src[at++] = uint8_t(y);
                src[at++] = uint8_t(u);
                src[at++] = uint8_t(y + 1);
                src[at++] = uint8_t(v);
            }
    std::vector<uint8_t> table(size_t(width) * height * 3), vector(table.size());
    YuvConverter::yuy2ToBgrTable(src.data(), table.data(), width, height);
    YuvConverter::yuy2ToBgr(src.data(), vector.data(), width, height);
    QVERIFY(table == vector);
    for (auto implementation : {YuvConverter::Ssse3, YuvConverter::Avx2}) {
        std::fill(vector.begin(), vector.end(), 0);
        if (YuvConverter::yuy2ToBgrUsing(implementation, src.data(), vector.data(), width, height))
            QVERIFY2(table == vector, qPrintable(QString::number(implementation)));
    }

    at = 0;
    for (int u = 0; u < 256; ++u)
        for (int v = 0; v < 256; ++v)
            for (int y = 0; y < 256; ++y, at += 3) {
                uint8_t expected[3];
                referencePixel(y, u, v, expected);
                if (table[at] != expected[0] || table[at + 1] != expected[1] || table[at + 2] != expected[2])
                    QFAIL(qPrintable(QStringLiteral("Y %1 U %2 V %3").arg(y).arg(u).arg(v)));
            }
}

void TstApp::yuy2VectorPathMatchesTableAtEveryLength()
{
    // Lengths that are not whole vector steps end in the table method; nothing is written beyond.
    std::vector<uint8_t> src(4 * 40);
    for (size_t i = 0; i < src.size(); ++i)
        src[i] = uint8_t(i * 37 + 11);
    for (int pixels = 2; pixels <= 80; pixels += 2) {
        std::vector<uint8_t> table(pixels * 3 + 8, 0xEE);
        YuvConverter::yuy2ToBgrTable(src.data(), table.data(), pixels, 1);
        for (auto implementation : {YuvConverter::Table, YuvConverter::Ssse3, YuvConverter::Avx2}) {
            std::vector<uint8_t> vector(pixels * 3 + 8, 0xEE);
            if (!YuvConverter::yuy2ToBgrUsing(implementation, src.data(), vector.data(), pixels, 1))
                continue;
            QVERIFY2(table == vector, qPrintable(QStringLiteral("%1 pixels, %2").arg(pixels).arg(implementation)));
            QCOMPARE(int(vector[pixels * 3]), 0xEE);
        }
    }
}

void TstApp::bgrCopy()
{
    std::vector<uint8_t> src(4 * 3 * 3), dst(src.size() + 1, 0);
    for (size_t i = 0; i < src.size(); ++i)
        src[i] = uint8_t(i + 1);
    YuvConverter::copyBgr(src.data(), dst.data(), 4, 3);
    QVERIFY(std::equal(src.begin(), src.end(), dst.begin()));
    QCOMPARE(int(dst.back()), 0);
}

QTEST_APPLESS_MAIN(TstApp)
#include "tst_app.moc"
