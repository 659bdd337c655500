#pragma once

#include <QDialog>

#include <array>
#include <memory>

class QAbstractButton;
class QDoubleSpinBox;
class QPushButton;

namespace Ui {
class PreferencesDialog;
}

// The preferences and the five 3D camera presets, as a tabbed form over the settings store. The
// controls are loaded from the store each time the dialog is shown and written back, every one of
// them, on OK; Cancel and Restore Defaults write nothing.
class PreferencesDialog : public QDialog {
    Q_OBJECT

public:
    explicit PreferencesDialog(QWidget* parent = nullptr);
    ~PreferencesDialog() override;

    // The colours chosen so far, 0xRRGGBB.
    quint32 roiColor() const { return m_roiColor; }
    quint32 backgroundColor() const { return m_backgroundColor; }
    quint32 nonMappedUvColor() const { return m_nonMappedUvColor; }

public slots:
    void accept() override;

protected:
    void showEvent(QShowEvent* event) override;
    virtual void setButtonColor(QPushButton* button, quint32 rgb);

private slots:
    void on_pbRoiColorSelection_clicked();
    void on_pbBgColorSelection_clicked();
    void on_pbColorSelection_clicked();
    void on_buttonBox_clicked(QAbstractButton* button);

private:
    // Preset spin boxes by value (target X, Y, Z, distance, tilt, pan) and preset (Front ... Bottom).
    enum CameraValue { TargetX = 0, TargetY, TargetZ, Distance, Tilt, Pan, CameraValueCount };
    static constexpr int PresetCount = 5;

    QDoubleSpinBox* cameraSpinBox(int value, int preset) const { return m_cameraSpinBoxes[value * PresetCount + preset]; }
    void load();
    void save();
    void restoreDefaults();
    // Runs a colour dialog over this one; an accepted colour replaces `rgb` and repaints `button`.
    void pickColor(QPushButton* button, quint32& rgb);

    std::unique_ptr<Ui::PreferencesDialog> ui;
    quint32 m_roiColor = 0;
    quint32 m_backgroundColor = 0;
    quint32 m_nonMappedUvColor = 0;
    std::array<QDoubleSpinBox*, CameraValueCount * PresetCount> m_cameraSpinBoxes{};
};
