// The About dialog names both versions and closes with its button.

#include "widgets/AboutDialog.h"

#include <QPushButton>
#include <QTextBrowser>
#include <QtTest>

class TestAboutDialog : public QObject {
    Q_OBJECT

private slots:
    void namesTheVersionsAndCloses()
    {
        AboutDialog dialog;
        QCOMPARE(dialog.windowTitle(), QString("About"));
        const QString text = dialog.findChild<QTextBrowser*>("textCameraInfo")->toPlainText();
        QVERIFY2(text.contains("Zerlane Viewer 1.4.0.1140"), qPrintable(text));
        QVERIFY2(text.contains("Using ZerlaneSDK 1.4.0.1140 linux64 gcc (Release)"), qPrintable(text));
        QVERIFY(!text.contains("%1") && !text.contains("%2"));

        QSignalSpy accepted(&dialog, &QDialog::accepted);
        dialog.show();
        dialog.findChild<QPushButton*>("buttonClose")->click();
        QCOMPARE(accepted.size(), 1);
        QVERIFY(!dialog.isVisible());
    }
};

QTEST_MAIN(TestAboutDialog)
#include "tst_aboutdialog.moc"
