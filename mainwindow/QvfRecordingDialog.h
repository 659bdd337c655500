#pragma once

#include <QDialog>
#include <QList>
#include <QString>

#include <memory>
#include <vector>

class BufferData;
class QCheckBox;
namespace Ui {
class QvfRecordingDialog;
}

// Asks for a recording's file name ("movie-<date>-<time>.qvf" in the current directory to begin with)
// and for the shown buffers to record, one check box each; OK is enabled while at least one is checked.
//
// The buffer records are only handed back, never read after construction: a caller compares them with
// its own records, so a record that went while the dialog was open does no harm.
class QvfRecordingDialog : public QDialog {
    Q_OBJECT
public:
    QvfRecordingDialog(const std::vector<BufferData*>& shownBuffers, QWidget* parent = nullptr);
    ~QvfRecordingDialog() override;

    QString fileName() const;
    // The checked boxes' buffers, in check-box order.
    std::vector<BufferData*> checkedBuffers() const;

private slots:
    void on_filenameButton_clicked();
    void onCheckboxClicked(int state);

private:
    // "Depth (Depth Node, <model> (<serial>))": the buffer, its node and its device.
    static QString labelFor(BufferData* buffer);
    bool anyChecked() const;

    std::unique_ptr<Ui::QvfRecordingDialog> ui;
    QList<QCheckBox*> m_checkBoxes;
    std::vector<BufferData*> m_buffers; // m_buffers[i] belongs to m_checkBoxes[i]
};
