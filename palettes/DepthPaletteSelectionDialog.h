#pragma once

#include <QDialog>
#include <QList>
#include <QStringList>

#include <memory>
#include <vector>

class DepthPalette;
class QRadioButton;

// Lists every palette the views can colour depth-like images with, each as a radio button named after
// it over its colour strip: the two grey scales, the built-in "Close range" and "Normal range", then
// every "*.xml" of the current directory that loads (the others are left out, with the loader's
// messages). The button of the palette equal to the current one is checked. "Ok" offers the checked
// palette through paletteChosen(); "Cancel" changes nothing.
class DepthPaletteSelectionDialog : public QDialog {
    Q_OBJECT
public:
    // `current` is compared by value (size, name and table) and may be null.
    explicit DepthPaletteSelectionDialog(const DepthPalette* current, QWidget* parent = nullptr);
    ~DepthPaletteSelectionDialog() override;

    // The names of the current directory's "*.xml" entries, in directory order, and the palettes those
    // of them that load give. Apart, because a file may go between the listing and its load.
    static QStringList localPaletteFiles();
    static std::vector<std::unique_ptr<DepthPalette>> loadPalettes(const QStringList& files);

    const std::vector<std::unique_ptr<DepthPalette>>& palettes() const { return m_palettes; }
    const QList<QRadioButton*>& radioButtons() const { return m_radioButtons; }

signals:
    // The palette stays the dialog's: receivers copy it.
    void paletteChosen(const DepthPalette& palette);

private slots:
    void on_okButtonClicked();
    void on_cancelButtonClicked();

private:
    void buildPaletteList();
    QWidget* buildRadioList(const DepthPalette* current);

    std::vector<std::unique_ptr<DepthPalette>> m_palettes; // in display order
    QList<QRadioButton*> m_radioButtons;                   // button i belongs to palette i
};
