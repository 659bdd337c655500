// The preferences dialog over an isolated settings store: load on show, every key written on OK,
// nothing on Cancel or Restore Defaults alone, clamping by the controls, the axis-labels rule and
// the colour buttons.

#include "support/ViewerTestSupport.h"
#include "widgets/PreferencesDialog.h"
#include "worker/Settings.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

namespace {

template <class T>
T* control(QDialog& dialog, const char* name)
{
    T* found = dialog.findChild<T*>(name);
    if (!found)
        qFatal("no control %s", name);
    return found;
}

// Answers the next colour dialog with `color`, or cancels it when `color` is invalid.
void answerColorDialog(const QColor& color)
{
    QTimer::singleShot(0, [color] {
        auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        if (color.isValid()) {
            dialog->setCurrentColor(color);
            dialog->accept();
        } else {
            dialog->reject();
        }
    });
}

QStringList storedKeys()
{
    QStringList keys = Settings::store().allKeys();
    keys.sort();
    return keys;
}

} // namespace

class TestPreferences : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { ViewerTest::isolateSettings(); }
    void init() { Settings::store().clear(); }

    void showLoadsAndClampsOkWritesEveryKey()
    {
        Settings::setDotSize(50);       // beyond the control's 1..10
        Settings::setSdNumFrames(1);    // below 2..100
        Settings::setAutoSaveWorkspace(true);
        Settings::setCameraPan(1, 200.f);
        Settings::setRoiColor(0x102030);
        PreferencesDialog dialog;
        dialog.show();
        QCOMPARE(dialog.windowTitle(), QString("Dialog"));
        QCOMPARE(control<QSpinBox>(dialog, "sbDots")->value(), 10);
        QCOMPARE(control<QSpinBox>(dialog, "sbSDFrames")->value(), 2);
        QVERIFY(control<QCheckBox>(dialog, "cbAutoSaveWorkspace")->isChecked());
        QCOMPARE(control<QDoubleSpinBox>(dialog, "sbLeftViewPan")->value(), 200.0);
        QCOMPARE(control<QDoubleSpinBox>(dialog, "sbTopViewTilt")->value(), -90.0);
        QCOMPARE(control<QPushButton>(dialog, "pbRoiColorSelection")->styleSheet(),
                 QString("background-color:#102030; border: 1px solid black;"));
        auto* x = control<QDoubleSpinBox>(dialog, "sbFrontViewX");
        QCOMPARE(x->minimum(), -50.0);
        QCOMPARE(x->singleStep(), 0.1);
        QCOMPARE(x->decimals(), 2);
        QCOMPARE(control<QDoubleSpinBox>(dialog, "sbBottomViewPan")->maximum(), 359.0);
        QCOMPARE(control<QDoubleSpinBox>(dialog, "sbBottomViewPan")->decimals(), 0);

        control<QDoubleSpinBox>(dialog, "sbRightViewDistance")->setValue(3.25);
        control<QDialogButtonBox>(dialog, "buttonBox")->button(QDialogButtonBox::Ok)->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(Settings::dotSize(), 10);
        QCOMPARE(Settings::sdNumFrames(), 2);
        QCOMPARE(Settings::cameraTargetDistance(2), 3.25f);
        QCOMPARE(Settings::cameraPan(1), 200.f);
        // Every preference and every preset value is in the store now, changed or not.
        QCOMPARE(storedKeys().size(), 11 + 5 * 6);
    }

    void cancelAndRestoreDefaultsWriteNothing()
    {
        Settings::setDotSize(4);
        Settings::setDisplayAxis(true);
        Settings::setDisplayAxisLabels(true);
        Settings::setBackgroundColor(0x0000ff);
        const QStringList before = storedKeys();
        {
            PreferencesDialog dialog;
            dialog.show();
            control<QSpinBox>(dialog, "sbDots")->setValue(7);
            answerColorDialog(QColor(0x12, 0x34, 0x56));
            control<QPushButton>(dialog, "pbBgColorSelection")->click();
            QCOMPARE(dialog.backgroundColor(), 0x123456u);
            // Unchecking the axes disables their labels at once and keeps the mark.
            auto* labels = control<QCheckBox>(dialog, "cbShowAxisLabels");
            control<QCheckBox>(dialog, "cbShowAxis")->setChecked(false);
            QVERIFY(!labels->isEnabled());
            QVERIFY(labels->isChecked());
            control<QDialogButtonBox>(dialog, "buttonBox")->button(QDialogButtonBox::Cancel)->click();
        }
        QCOMPARE(storedKeys(), before);
        QCOMPARE(Settings::dotSize(), 4);
        QCOMPARE(Settings::backgroundColor(), 0x0000ffu);

        PreferencesDialog dialog;
        dialog.show();
        QCOMPARE(control<QSpinBox>(dialog, "sbDots")->value(), 4); // shown from the store again
        // A colour dialog that is cancelled changes nothing.
        answerColorDialog(QColor());
        control<QPushButton>(dialog, "pbBgColorSelection")->click();
        QCOMPARE(dialog.backgroundColor(), 0x0000ffu);

        control<QDialogButtonBox>(dialog, "buttonBox")->button(QDialogButtonBox::RestoreDefaults)->click();
        QVERIFY(dialog.isVisible());
        QCOMPARE(control<QSpinBox>(dialog, "sbDots")->value(), 2);
        QCOMPARE(control<QSpinBox>(dialog, "sbSDFrames")->value(), 100);
        QCOMPARE(control<QDoubleSpinBox>(dialog, "sbBottomViewTilt")->value(), 90.0);
        QCOMPARE(control<QDoubleSpinBox>(dialog, "sbFrontViewDistance")->value(), 0.5);
        QCOMPARE(dialog.roiColor(), 0x3399ffu);
        QCOMPARE(dialog.backgroundColor(), 0u);
        QCOMPARE(control<QPushButton>(dialog, "pbBgColorSelection")->styleSheet(),
                 QString("background-color:#000000; border: 1px solid black;"));
        QCOMPARE(storedKeys(), before);
        QCOMPARE(Settings::dotSize(), 4);

        control<QDialogButtonBox>(dialog, "buttonBox")->button(QDialogButtonBox::Ok)->click();
        QCOMPARE(Settings::dotSize(), 2);
        QCOMPARE(Settings::backgroundColor(), 0u);
        QCOMPARE(Settings::cameraTilt(4), 90.f);
    }
};

QTEST_MAIN(TestPreferences)
#include "tst_preferences.moc"
