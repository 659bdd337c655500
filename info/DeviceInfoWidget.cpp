#include "info/DeviceInfoWidget.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Format.h"
#include "app/shared/ViewerLog.h"
#include "camera/DeviceData.h"
#include "widgets/TextColor.h"

#include <QLabel>

using Zerlane::Utils::Format;

namespace {

QString versionText(int32_t version)
{
    return QString("0x%1").arg(uint32_t(version), 0, 16);
}

} // namespace

DeviceInfoWidget::DeviceInfoWidget(DeviceData* device, InfoContext* context, QWidget* parent)
    : PropertyPanel(device, Zerlane::Interface(device->device), context, parent)
    , m_overheating(new QLabel(this))
{
    addFacts();
    // The device page has no ExposureAuto setter: such a combo is shown but sends nothing.
    addPropertyEditors(device->properties, false);
}

DeviceData* DeviceInfoWidget::device() const
{
    return static_cast<DeviceData*>(record());
}

void DeviceInfoWidget::addFacts()
{
    const Zerlane::Device& camera = device()->device;
    try {
        addRow("Model:", new QLabel(QString::fromStdString(Zerlane::Device::Model_toString(camera.getModel())), this));
        addRow("Serial:", new QLabel(QString::fromStdString(camera.getSerialNumber()), this));
        addRow("USB backend version:", new QLabel(versionText(camera.getUsbBackendVersion()), this));
        addRow("TOF controller version:", new QLabel(versionText(camera.getTofControllerVersion()), this));
        showOverheating(camera.getOverheating());
        addRow("Overheating : ", m_overheating);
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Format("Could not generate device info: %") % e.getMessage());
    }
}

void DeviceInfoWidget::showOverheating(bool overheating)
{
    m_overheating->setText(overheating ? "yes" : "no");
    setTextColor(m_overheating, overheating ? QColor(0xff, 0, 0) : QColor(0, 0, 0));
}

void DeviceInfoWidget::propertyChanged(const Zerlane::Device& camera, const Zerlane::PropertyBase& property)
{
    if (camera != device()->device)
        return;
    showOverheating(camera.getOverheating());
    if (!property.isReadOnly())
        refreshEditor(property);
}
