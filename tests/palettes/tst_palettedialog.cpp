// The palette dialog: its list and order, the checked palette, Ok and Cancel, and the colour strips.
#include "palettes/DepthPalette.h"
#include "palettes/DepthPaletteSelectionDialog.h"
#include "palettes/PaletteWidget.h"
#include "support/ChildWithText.h"
#include "support/LogRecorder.h"

#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

using PalettePtr = std::unique_ptr<DepthPalette>;

QStringList namesOf(const DepthPaletteSelectionDialog& dialog)
{
    QStringList names;
    for (const QRadioButton* button : dialog.radioButtons())
        names << button->text();
    return names;
}

QList<int> checkedOf(const DepthPaletteSelectionDialog& dialog)
{
    QList<int> checked;
    for (int i = 0; i < dialog.radioButtons().size(); ++i) {
        if (dialog.radioButtons()[i]->isChecked())
            checked << i;
    }
    return checked;
}

const QStringList kBuiltIn{"Grey scale", "Inverted grey scale", "Close range", "Normal range"};

} // namespace

class TstPaletteDialog : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QDir::setCurrent(m_dir.path()));
    }

    void listsBuiltInThenLocalPalettesInOrder()
    {
        {
            DepthPaletteSelectionDialog dialog(nullptr);
            QCOMPARE(namesOf(dialog), kBuiltIn);
            QCOMPARE(dialog.palettes().size(), size_t(4));
            QCOMPARE(dialog.palettes()[0]->size(), 32768u);
            QCOMPARE(dialog.findChildren<PaletteWidget*>().size(), 4);
        }

        // Directory order; a broken file is left out with the loader's message, the rest still load.
        write("b.xml", "<palette name=\"Beta\" range=\"9\"/>");
        write("a.xml", "<palette name=\"Alpha\" range=\"9\"/>");
        write("broken.xml", "<palette name=\"Broken\" range=\"0\"/>");
        write("c.xml.bak", "<palette name=\"Backup\" range=\"9\"/>");
        write("C.xml", "<palette name=\"Gamma\" range=\"9\"/>");
        ViewerTest::LogRecorder log(true);
        DepthPaletteSelectionDialog dialog(nullptr);
        QCOMPARE(namesOf(dialog), kBuiltIn + QStringList({"Alpha", "Beta", "Gamma"}));
        QCOMPARE(log.warnings(), QStringList{"Palette range was not specified"});
        for (const char* name : {"a.xml", "b.xml", "broken.xml", "c.xml.bak", "C.xml"})
            QFile::remove(name);
    }

    void aFileRemovedAfterTheListingIsLeftOut()
    {
        write("first.xml", "<palette name=\"First\" range=\"9\"/>");
        write("second.xml", "<palette name=\"Second\" range=\"9\"/>");
        const QStringList files = DepthPaletteSelectionDialog::localPaletteFiles();
        QCOMPARE(files, (QStringList{"first.xml", "second.xml"}));
        QFile::remove("first.xml");
        const auto palettes = DepthPaletteSelectionDialog::loadPalettes(files);
        QCOMPARE(palettes.size(), size_t(1));
        QCOMPARE(palettes[0]->name(), QByteArray("Second"));
        QFile::remove("second.xml");
    }

    void theCurrentPaletteIsCheckedByEquality()
    {
        PalettePtr normal(DepthPalette::fromXmlFile(":/palettes/palette.xml"));
        QCOMPARE(checkedOf(DepthPaletteSelectionDialog(normal.get())), QList<int>{3});
        PalettePtr inverted(DepthPalette::invertedGreyScale(32768));
        QCOMPARE(checkedOf(DepthPaletteSelectionDialog(inverted.get())), QList<int>{1});

        // Same name, another table or size: not the same palette.
        normal->colors()[65535] ^= 1;
        QCOMPARE(checkedOf(DepthPaletteSelectionDialog(normal.get())), QList<int>{});
        PalettePtr shorter(DepthPalette::greyScale(32767));
        QCOMPARE(checkedOf(DepthPaletteSelectionDialog(shorter.get())), QList<int>{});
        QCOMPARE(checkedOf(DepthPaletteSelectionDialog(nullptr)), QList<int>{});

        // The buttons exclude each other.
        DepthPaletteSelectionDialog dialog(inverted.get());
        dialog.radioButtons()[2]->click();
        QCOMPARE(checkedOf(dialog), QList<int>{2});
    }

    void okOffersTheCheckedPaletteAndCancelNothing()
    {
        PalettePtr close(DepthPalette::fromXmlFile(":/palettes/closepalette.xml"));
        DepthPaletteSelectionDialog cancelled(close.get());
        QSignalSpy none(&cancelled, &DepthPaletteSelectionDialog::paletteChosen);
        cancelled.radioButtons()[3]->click();
        ViewerTest::childWithText<QPushButton>(&cancelled, "Cancel")->click();
        QCOMPARE(none.size(), 0);

        DepthPaletteSelectionDialog dialog(close.get());
        QByteArray offered;
        connect(&dialog, &DepthPaletteSelectionDialog::paletteChosen, this,
                [&](const DepthPalette& palette) { offered += palette.name(); });
        dialog.radioButtons()[3]->click();
        ViewerTest::childWithText<QPushButton>(&dialog, "Ok")->click();
        QCOMPARE(offered, QByteArray("Normal range"));
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }

    void stripsSpanTheWholeIndexRange()
    {
        QCOMPARE(PaletteWidget::indexOfColumn(0, 318), 0u);
        QCOMPARE(PaletteWidget::indexOfColumn(159, 318), 32768u);
        QCOMPARE(PaletteWidget::indexOfColumn(317, 318), 65329u);
        QCOMPARE(PaletteWidget::indexOfColumn(1, 1), 0u); // 65,536 cut to 16 bits
        QCOMPARE(PaletteWidget::colorOf(0x00563412), QColor(0x12, 0x34, 0x56));

        PalettePtr normal(DepthPalette::fromXmlFile(":/palettes/palette.xml"));
        PalettePtr grey(DepthPalette::greyScale(32768));
        for (const DepthPalette* palette : {normal.get(), grey.get()}) {
            PaletteWidget strip(palette);
            QCOMPARE(strip.size(), QSize(320, 32));
            const QImage image = strip.grab().toImage();
            // Column x shows the entry of column x - 1 of the 318 inside the frame, on every row inside.
            for (int x = 1; x <= 318; ++x) {
                const QColor expected = PaletteWidget::colorOf(palette->colors()[PaletteWidget::indexOfColumn(x - 1, 318)]);
                QCOMPARE(image.pixelColor(x, 1), expected);
                QCOMPARE(image.pixelColor(x, 30), expected);
            }
            QCOMPARE(image.pixelColor(0, 15), QColor(Qt::black)); // the frame
            QCOMPARE(image.pixelColor(100, 0), QColor(Qt::black));
        }

        // "Normal range" rises from black to red over its first 7 columns; the rainbow begins at the 8th.
        PaletteWidget normalStrip(normal.get());
        const QImage strip = normalStrip.grab().toImage();
        QCOMPARE(strip.pixelColor(1, 10), QColor(0, 0, 0));
        QVERIFY(strip.pixelColor(7, 10).red() > 200 && strip.pixelColor(7, 10).green() == 0);
        QVERIFY(strip.pixelColor(8, 10).green() > 0);
    }

private:
    void write(const char* name, const QByteArray& content)
    {
        QFile file(QString::fromLatin1(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QTemporaryDir m_dir;
};

QTEST_MAIN(TstPaletteDialog)
#include "tst_palettedialog.moc"
