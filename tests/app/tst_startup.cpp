// The command line, the usage box and the start-up error text.

#include "app/CommandLine.h"
#include "app/shared/StartupOptions.h"
#include "app/ViewerMain.h"
#include "support/ViewerTestSupport.h"

#include <QLabel>
#include <QMessageBox>
#include <QtTest>

#include <vector>

class TestStartup : public QObject {
    Q_OBJECT

private slots:
    void init() { ViewerTest::resetStartupOptions(); }

    void parsesTheCommandLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("environmentPort");
        QTest::addColumn<bool>("usage");
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("flags"); // s standalone, d depth, c colour, a audio, h hidden, p popups

        QTest::newRow("nothing") << QStringList{} << 0 << false << 0 << "";
        QTest::newRow("environment port") << QStringList{} << 5000 << false << 5000 << "";
        QTest::newRow("command line wins") << QStringList{"-p", "6000"} << 5000 << false << 6000 << "";
        QTest::newRow("truncated to 16 bits") << QStringList{"-p", "70000"} << 0 << false << 4464 << "";
        QTest::newRow("trailing characters ignored, parsing goes on")
            << QStringList{"-p", "12ab", "-dd"} << 5000 << false << 5000 << "d";
        QTest::newRow("port last shows usage") << QStringList{"-sa", "-p"} << 0 << true << 0 << "s";
        QTest::newRow("empty value skipped") << QStringList{"--port", "", "-dc"} << 7 << false << 7 << "c";
        QTest::newRow("port value is consumed even when it looks like an option")
            << QStringList{"-p", "-h", "-da"} << 0 << false << 0 << "a";
        QTest::newRow("unknown options ignored") << QStringList{"--bogus", "-x", "-da"} << 0 << false << 0 << "a";
        QTest::newRow("help stops parsing") << QStringList{"-dd", "-h", "-dc"} << 0 << true << 0 << "d";
        QTest::newRow("help anywhere") << QStringList{"--help"} << 0 << true << 0 << "";
        QTest::newRow("comparison is exact") << QStringList{"-SA", "--Standalone", "-sa "} << 0 << false << 0 << "";
        QTest::newRow("long forms")
            << QStringList{"--standalone", "--port", "1234", "--disabledepth", "--disablecolor", "--disableaudio",
                           "--showhidden", "--disablePopups"}
            << 0 << false << 1234 << "sdcahp";
        QTest::newRow("short forms") << QStringList{"-sa", "-dd", "-dc", "-da"} << 0 << false << 0 << "sdca";
    }

    void parsesTheCommandLine()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, environmentPort);
        QFETCH(bool, usage);
        QFETCH(int, port);
        QFETCH(QString, flags);

        arguments.prepend("ZerlaneViewer");
        std::vector<QByteArray> bytes;
        for (const QString& argument : arguments)
            bytes.push_back(argument.toUtf8());
        std::vector<const char*> argv;
        for (const QByteArray& b : bytes)
            argv.push_back(b.constData());

        QCOMPARE(CommandLine::parse(int(argv.size()), argv.data(), environmentPort), usage);
        if (!usage)
            QCOMPARE(int(StartupOptions::port()), port);
        QCOMPARE(StartupOptions::standalone(), flags.contains('s'));
        QCOMPARE(StartupOptions::disableDepth(), flags.contains('d'));
        QCOMPARE(StartupOptions::disableColor(), flags.contains('c'));
        QCOMPARE(StartupOptions::disableAudio(), flags.contains('a'));
        QCOMPARE(StartupOptions::showHidden(), flags.contains('h'));
        QCOMPARE(StartupOptions::disablePopups(), flags.contains('p'));
    }

    void usageTextIsExact()
    {
        QCOMPARE(QString(CommandLine::usageText()),
                 QString("\nUsage :\n\n    ZerlaneViewer [options]\n\nOptions :\n\n"
                         "    -h,  --help                     Print this help\n"
                         "    -sa, --standalone               Uses the zerlane driver in standalone mode\n"
                         "    -p,  --port <PORT>              Uses PORT to connect to the Zerlane server\n"
                         "    -dd, --disabledepth             Don't use depth nodes\n"
                         "    -dc, --disablecolor             Don't use color nodes\n"
                         "    -da, --disableaudio             Don't use audio nodes\n\n"));
    }

    void usageBoxKeepsItsOptionColumnsInLine()
    {
        std::unique_ptr<QMessageBox> box = ViewerMain::usageBox();
        QCOMPARE(box->windowTitle(), QString("Usage"));
        box->show();
        QVERIFY(QTest::qWaitForWindowExposed(box.get()));
        QLabel* label = nullptr;
        for (QLabel* candidate : box->findChildren<QLabel*>()) {
            if (candidate->text() == QString(CommandLine::usageText()))
                label = candidate;
        }
        QVERIFY2(label, "the usage text is not shown as it is");

        // Each option's explanation starts at the same place, and no line is wrapped.
        const QRegularExpression option("^(    -\\S.*\\s{2,})\\S");
        QSet<int> explanationStarts;
        for (const QString& line : label->text().split('\n')) {
            QVERIFY2(label->fontMetrics().horizontalAdvance(line) <= label->contentsRect().width(), qPrintable(line));
            const QRegularExpressionMatch match = option.match(line);
            if (match.hasMatch())
                explanationStarts << label->fontMetrics().horizontalAdvance(match.captured(1));
        }
        QCOMPARE(explanationStarts.size(), 1);
        box->close();
    }

    void noServerGivesACapitalisedError()
    {
        // Nothing listens on port 1: the library refuses at once, and the dialog capitalises its message.
        try {
            Zerlane::Context::create("localhost", 1);
            QFAIL("a context was created without a server");
        } catch (const Zerlane::TransportException& e) {
            const QString text = ViewerMain::contextErrorText(e.getMessage());
            QVERIFY(text.at(0).isUpper());
            QVERIFY2(text.contains("1"), qPrintable(text));
        }
        QCOMPARE(ViewerMain::contextErrorText("could not reach"), QString("Could not reach"));
        QCOMPARE(ViewerMain::contextErrorText(""), QString(""));
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
