#include "widgets/AboutDialog.h"

#include "ui_AboutDialog.h"

#include "Zerlane/Version.h"

AboutDialog::AboutDialog(QWidget* parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::AboutDialog>())
{
    ui->setupUi(this);
    const QString html = ui->textCameraInfo->toHtml();
    ui->textCameraInfo->setHtml(html.arg(ViewerVersion, QString::fromStdString(Zerlane::versionBanner())));
}

AboutDialog::~AboutDialog() = default;
