#include "palettes/DepthPaletteSelectionDialog.h"

#include "palettes/DepthPalette.h"
#include "palettes/PaletteWidget.h"

#include <QDir>
#include <QFile>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpacerItem>
#include <QVBoxLayout>

namespace {

constexpr quint32 kGreyScaleSize = 32768;

} // namespace

DepthPaletteSelectionDialog::DepthPaletteSelectionDialog(const DepthPalette* current, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle("Depth palette");
    auto* okButton = new QPushButton("Ok", this);
    auto* cancelButton = new QPushButton("Cancel", this);
    connect(okButton, &QPushButton::clicked, this, &DepthPaletteSelectionDialog::on_okButtonClicked);
    connect(cancelButton, &QPushButton::clicked, this, &DepthPaletteSelectionDialog::on_cancelButtonClicked);

    buildPaletteList();

    auto* scrollArea = new QScrollArea(this);
    QWidget* list = buildRadioList(current);
    scrollArea->setWidget(list);
    // Wide enough for the strips without a horizontal scroll bar.
    scrollArea->setMinimumWidth(list->sizeHint().width() + scrollArea->verticalScrollBar()->sizeHint().width()
                                + 2 * scrollArea->frameWidth());

    auto* left = new QVBoxLayout;
    left->addWidget(scrollArea);
    auto* right = new QVBoxLayout;
    right->addWidget(okButton);
    right->addWidget(cancelButton);
    right->addItem(new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Expanding));
    auto* top = new QHBoxLayout(this);
    top->addLayout(left);
    top->addLayout(right);
}

DepthPaletteSelectionDialog::~DepthPaletteSelectionDialog() = default;

void DepthPaletteSelectionDialog::buildPaletteList()
{
    m_palettes.emplace_back(DepthPalette::greyScale(kGreyScaleSize));
    m_palettes.emplace_back(DepthPalette::invertedGreyScale(kGreyScaleSize));
    const QStringList builtIn{":/palettes/closepalette.xml", ":/palettes/palette.xml"};
    for (const QStringList& files : {builtIn, localPaletteFiles()}) {
        for (std::unique_ptr<DepthPalette>& palette : loadPalettes(files))
            m_palettes.push_back(std::move(palette));
    }
}

QStringList DepthPaletteSelectionDialog::localPaletteFiles()
{
    return QDir(".").entryList(QStringList{"*.xml"});
}

std::vector<std::unique_ptr<DepthPalette>> DepthPaletteSelectionDialog::loadPalettes(const QStringList& files)
{
    std::vector<std::unique_ptr<DepthPalette>> palettes;
    for (const QString& file : files) {
        if (DepthPalette* palette = DepthPalette::fromXmlFile(QFile::encodeName(file)))
            palettes.emplace_back(palette);
    }
    return palettes;
}

QWidget* DepthPaletteSelectionDialog::buildRadioList(const DepthPalette* current)
{
    // One parent for all buttons: checking one unchecks the others.
    auto* list = new QWidget;
    auto* layout = new QVBoxLayout(list);
    for (const std::unique_ptr<DepthPalette>& palette : m_palettes) {
        auto* button = new QRadioButton(QString::fromUtf8(palette->name()), list);
        button->setChecked(current && *palette == *current);
        m_radioButtons.append(button);
        layout->addWidget(button);
        layout->addWidget(new PaletteWidget(palette.get(), list));
    }
    return list;
}

void DepthPaletteSelectionDialog::on_okButtonClicked()
{
    for (int i = 0; i < m_radioButtons.size(); ++i) {
        if (m_radioButtons[i]->isChecked())
            emit paletteChosen(*m_palettes[size_t(i)]);
    }
    accept();
}

void DepthPaletteSelectionDialog::on_cancelButtonClicked()
{
    reject();
}
