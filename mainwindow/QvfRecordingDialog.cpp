#include "mainwindow/QvfRecordingDialog.h"

#include "ui_QvfRecordingDialog.h"

#include "app/shared/TextUtils.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"

#include <QCheckBox>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QPushButton>

QvfRecordingDialog::QvfRecordingDialog(const std::vector<BufferData*>& shownBuffers, QWidget* parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::QvfRecordingDialog>())
    , m_buffers(shownBuffers)
{
    ui->setupUi(this);
    const QDateTime now = QDateTime::currentDateTime();
    const QString name = QString("movie-%1-%2.qvf").arg(now.toString("yyyyMMdd"), now.toString("hhmmss"));
    ui->filenameEdit->setText(QString("%1/%2").arg(QDir::currentPath(), name));

    for (BufferData* buffer : m_buffers) {
        auto* box = new QCheckBox(labelFor(buffer), ui->buffersGroupBox);
        ui->buffersGroupBox->layout()->addWidget(box);
        connect(box, &QCheckBox::stateChanged, this, &QvfRecordingDialog::onCheckboxClicked);
        m_checkBoxes.append(box);
    }
    ui->buttonBox->button(QDialogButtonBox::Ok)->setEnabled(false);
}

QvfRecordingDialog::~QvfRecordingDialog() = default;

QString QvfRecordingDialog::labelFor(BufferData* buffer)
{
    const NodeData* node = buffer->node;
    const QString device = node->device ? deviceText(node->device->device) : QString("?");
    return QString("%1 (").arg(buffer->typeName()) + nodeKindText(node->node) + ", " + device + ")";
}

QString QvfRecordingDialog::fileName() const
{
    return ui->filenameEdit->text();
}

std::vector<BufferData*> QvfRecordingDialog::checkedBuffers() const
{
    std::vector<BufferData*> checked;
    for (int i = 0; i < m_checkBoxes.size(); ++i) {
        if (m_checkBoxes[i]->isChecked())
            checked.push_back(m_buffers[size_t(i)]);
    }
    return checked;
}

void QvfRecordingDialog::on_filenameButton_clicked()
{
    const QString chosen =
        QFileDialog::getSaveFileName(this, "Video filename", ui->filenameEdit->text(), "Hallmere Video (*.qvf)");
    if (!chosen.isEmpty())
        ui->filenameEdit->setText(chosen);
}

void QvfRecordingDialog::onCheckboxClicked(int state)
{
    ui->buttonBox->button(QDialogButtonBox::Ok)->setEnabled(state == Qt::Checked || anyChecked());
}

bool QvfRecordingDialog::anyChecked() const
{
    for (const QCheckBox* box : m_checkBoxes) {
        if (box->isChecked())
            return true;
    }
    return false;
}
