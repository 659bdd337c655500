#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class AboutDialog;
}

// Names the viewer's and the camera library's versions.
class AboutDialog : public QDialog {
    Q_OBJECT

public:
    static constexpr const char* ViewerVersion = "1.4.0.1140";

    explicit AboutDialog(QWidget* parent = nullptr);
    ~AboutDialog() override;

private:
    std::unique_ptr<Ui::AboutDialog> ui;
};
