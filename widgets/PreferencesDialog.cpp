#include "widgets/PreferencesDialog.h"

#include "ui_PreferencesDialog.h"

#include "worker/Settings.h"

#include <QColorDialog>

namespace {

struct PresetDefaults {
    double x, y, z, distance, pan, tilt;
};

// The presets' defaults, as the settings store has them.
constexpr PresetDefaults kPresetDefaults[] = {
    {0, 0, 0.5, 0.5, 0, 0},    // Front
    {0, 0, 0.5, 1.0, 270, 0},  // Left
    {0, 0, 0.5, 1.0, 90, 0},   // Right
    {0, 0, 0.5, 1.0, 0, -90},  // Top
    {0, 0, 0.5, 1.0, 180, 90}, // Bottom
};

} // namespace

PreferencesDialog::PreferencesDialog(QWidget* parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::PreferencesDialog>())
{
    ui->setupUi(this);
    m_cameraSpinBoxes = {
        ui->sbFrontViewX,        ui->sbLeftViewX,        ui->sbRightViewX,        ui->sbTopViewX,        ui->sbBottomViewX,
        ui->sbFrontViewY,        ui->sbLeftViewY,        ui->sbRightViewY,        ui->sbTopViewY,        ui->sbBottomViewY,
        ui->sbFrontViewZ,        ui->sbLeftViewZ,        ui->sbRightViewZ,        ui->sbTopViewZ,        ui->sbBottomViewZ,
        ui->sbFrontViewDistance, ui->sbLeftViewDistance, ui->sbRightViewDistance, ui->sbTopViewDistance, ui->sbBottomViewDistance,
        ui->sbFrontViewTilt,     ui->sbLeftViewTilt,     ui->sbRightViewTilt,     ui->sbTopViewTilt,     ui->sbBottomViewTilt,
        ui->sbFrontViewPan,      ui->sbLeftViewPan,      ui->sbRightViewPan,      ui->sbTopViewPan,      ui->sbBottomViewPan,
    };
    for (QPushButton* button : {ui->pbRoiColorSelection, ui->pbBgColorSelection, ui->pbColorSelection})
        button->setStyleSheet("background-color:white; border: 1px solid white;");
}

PreferencesDialog::~PreferencesDialog() = default;

void PreferencesDialog::showEvent(QShowEvent* event)
{
    load();
    QDialog::showEvent(event);
}

void PreferencesDialog::accept()
{
    QDialog::accept();
    save();
}

void PreferencesDialog::load()
{
    ui->cbAutoSaveWorkspace->setChecked(Settings::autoSaveWorkspace());
    ui->cbAutoExpandDevices->setChecked(Settings::autoExpandDevices());
    ui->cbAutoExpandNodes->setChecked(Settings::autoExpandNodes());
    m_roiColor = Settings::roiColor();
    ui->sbSDFrames->setValue(Settings::sdNumFrames());
    setButtonColor(ui->pbRoiColorSelection, m_roiColor);
    ui->sbDots->setValue(Settings::dotSize());
    ui->cbTriangles->setChecked(Settings::displayTriangles());
    ui->cbShowAxis->setChecked(Settings::displayAxis());
    ui->cbShowAxisLabels->setEnabled(Settings::displayAxis());
    ui->cbShowAxisLabels->setChecked(Settings::displayAxisLabels());
    for (int preset = 0; preset < PresetCount; ++preset) {
        cameraSpinBox(TargetX, preset)->setValue(Settings::cameraTargetX(preset));
        cameraSpinBox(TargetY, preset)->setValue(Settings::cameraTargetY(preset));
        cameraSpinBox(TargetZ, preset)->setValue(Settings::cameraTargetZ(preset));
        cameraSpinBox(Distance, preset)->setValue(Settings::cameraTargetDistance(preset));
        cameraSpinBox(Tilt, preset)->setValue(Settings::cameraTilt(preset));
        cameraSpinBox(Pan, preset)->setValue(Settings::cameraPan(preset));
    }
    m_backgroundColor = Settings::backgroundColor();
    m_nonMappedUvColor = Settings::nonMappedUvPixelsColor();
    setButtonColor(ui->pbBgColorSelection, m_backgroundColor);
    setButtonColor(ui->pbColorSelection, m_nonMappedUvColor);
}

void PreferencesDialog::save()
{
    Settings::setAutoSaveWorkspace(ui->cbAutoSaveWorkspace->isChecked());
    Settings::setAutoExpandDevices(ui->cbAutoExpandDevices->isChecked());
    Settings::setAutoExpandNodes(ui->cbAutoExpandNodes->isChecked());
    Settings::setSdNumFrames(ui->sbSDFrames->value());
    Settings::setRoiColor(m_roiColor);
    Settings::setDotSize(ui->sbDots->value());
    Settings::setDisplayTriangles(ui->cbTriangles->isChecked());
    Settings::setDisplayAxis(ui->cbShowAxis->isChecked());
    Settings::setDisplayAxisLabels(ui->cbShowAxisLabels->isChecked());
    for (int preset = 0; preset < PresetCount; ++preset) {
        Settings::setCameraTargetX(preset, float(cameraSpinBox(TargetX, preset)->value()));
        Settings::setCameraTargetY(preset, float(cameraSpinBox(TargetY, preset)->value()));
        Settings::setCameraTargetZ(preset, float(cameraSpinBox(TargetZ, preset)->value()));
        Settings::setCameraTargetDistance(preset, float(cameraSpinBox(Distance, preset)->value()));
        Settings::setCameraTilt(preset, float(cameraSpinBox(Tilt, preset)->value()));
        Settings::setCameraPan(preset, float(cameraSpinBox(Pan, preset)->value()));
    }
    Settings::setBackgroundColor(m_backgroundColor);
    Settings::setNonMappedUvPixelsColor(m_nonMappedUvColor);
}

void PreferencesDialog::restoreDefaults()
{
    ui->cbAutoSaveWorkspace->setChecked(false);
    ui->cbAutoExpandDevices->setChecked(true);
    ui->cbAutoExpandNodes->setChecked(true);
    m_roiColor = 0x3399FF;
    setButtonColor(ui->pbRoiColorSelection, m_roiColor);
    ui->sbSDFrames->setValue(100);
    ui->sbDots->setValue(2);
    ui->cbTriangles->setChecked(false);
    ui->cbShowAxis->setChecked(true);
    ui->cbShowAxisLabels->setEnabled(true);
    ui->cbShowAxisLabels->setChecked(false);
    for (int preset = 0; preset < PresetCount; ++preset) {
        const PresetDefaults& d = kPresetDefaults[preset];
        cameraSpinBox(TargetX, preset)->setValue(d.x);
        cameraSpinBox(TargetY, preset)->setValue(d.y);
        cameraSpinBox(TargetZ, preset)->setValue(d.z);
        cameraSpinBox(Distance, preset)->setValue(d.distance);
        cameraSpinBox(Tilt, preset)->setValue(d.tilt);
        cameraSpinBox(Pan, preset)->setValue(d.pan);
    }
    m_backgroundColor = 0x000000;
    m_nonMappedUvColor = 0x000000;
    setButtonColor(ui->pbBgColorSelection, m_backgroundColor);
    setButtonColor(ui->pbColorSelection, m_nonMappedUvColor);
}

void PreferencesDialog::setButtonColor(QPushButton* button, quint32 rgb)
{
    button->setStyleSheet(QString("background-color:#%1%2%3; border: 1px solid black;")
                              .arg((rgb >> 16) & 0xff, 2, 16, QChar('0'))
                              .arg((rgb >> 8) & 0xff, 2, 16, QChar('0'))
                              .arg(rgb & 0xff, 2, 16, QChar('0')));
}

void PreferencesDialog::pickColor(QPushButton* button, quint32& rgb)
{
    QColorDialog dialog(QColor::fromRgb(QRgb(rgb)), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    rgb = dialog.selectedColor().rgb() & 0xffffffu;
    setButtonColor(button, rgb);
}

void PreferencesDialog::on_pbRoiColorSelection_clicked()
{
    pickColor(ui->pbRoiColorSelection, m_roiColor);
}

void PreferencesDialog::on_pbBgColorSelection_clicked()
{
    pickColor(ui->pbBgColorSelection, m_backgroundColor);
}

void PreferencesDialog::on_pbColorSelection_clicked()
{
    pickColor(ui->pbColorSelection, m_nonMappedUvColor);
}

void PreferencesDialog::on_buttonBox_clicked(QAbstractButton* button)
{
    if (ui->buttonBox->buttonRole(button) == QDialogButtonBox::ResetRole)
        restoreDefaults();
}
