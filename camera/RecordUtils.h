#pragma once

class DeviceData;
class DeviceNodeBufferData;
class NodeData;

// The device a record belongs to: the device record itself, a node's device, a buffer's node's
// device; nullptr for null or any other kind.
DeviceData* deviceOf(DeviceNodeBufferData* record);
// The node a record stands for: the node record itself, a buffer's node; nullptr for a device, null
// or any other kind.
NodeData* nodeOf(DeviceNodeBufferData* record);
