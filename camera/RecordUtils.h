#pragma once

class DeviceData;
class DeviceNodeBufferData;

// The device a record belongs to: the device record itself, a node's device, a buffer's node's
// device; nullptr for null or any other kind.
DeviceData* deviceOf(DeviceNodeBufferData* record);
