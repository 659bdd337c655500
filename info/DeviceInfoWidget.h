#pragma once

#include "info/PropertyPanel.h"

#include "Zerlane/Device.h"

class DeviceData;
class QLabel;

// The page of a selected camera: its facts (model, serial, versions, overheating) and one editor per
// device property.
class DeviceInfoWidget : public PropertyPanel {
    Q_OBJECT

public:
    DeviceInfoWidget(DeviceData* device, InfoContext* context, QWidget* parent);

    DeviceData* device() const;
    // The camera reported a property change: the overheating row is read again and the property's
    // editor shows the new value. Changes of other cameras are ignored. Throws what the camera throws.
    void propertyChanged(const Zerlane::Device& device, const Zerlane::PropertyBase& property);

private:
    void addFacts();
    void showOverheating(bool overheating);

    QLabel* m_overheating;
};
