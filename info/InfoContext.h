#pragma once

#include "Zerlane/AudioNode.h"
#include "Zerlane/ColorNode.h"
#include "Zerlane/DepthNode.h"
#include "Zerlane/Property.h"

#include <mutex>

class DeviceNodeBufferData;
class NodeData;
class QString;
class WorkingThread;

// What the info panels need of the running program: typed property access through the camera
// manager (which reports failures to the user itself), the lock that keeps a record's property list
// still while editors are built from it, the node's current configuration, the worker that applies
// configurations, and whether hidden properties are offered. The panel is handed one, so that no
// panel reaches for the program's singletons.
class InfoContext {
public:
    virtual ~InfoContext() = default;

    // Writes a value of the variant's type; false (after the failure was reported) when refused.
    virtual bool setProperty(DeviceNodeBufferData* record, const QString& name, const Zerlane::PropertyValue& value) = 0;
    // Reads a value of `type`; a zero value of that type when the camera cannot tell (logged).
    virtual Zerlane::PropertyValue property(DeviceNodeBufferData* record, const QString& name,
                                            Zerlane::PropertyType type) = 0;

    virtual std::recursive_mutex& dataLock() = 0;

    virtual Zerlane::DepthNode::Configuration depthConfiguration(const NodeData* node) const = 0;
    virtual Zerlane::ColorNode::Configuration colorConfiguration(const NodeData* node) const = 0;
    virtual Zerlane::AudioNode::Configuration audioConfiguration(const NodeData* node) const = 0;

    // Receives the panels' set-configuration signals on its own thread.
    virtual WorkingThread* worker() const = 0;

    virtual bool showHidden() const = 0;

    template <class T>
    bool set(DeviceNodeBufferData* record, const QString& name, T value)
    {
        return setProperty(record, name, Zerlane::PropertyValue(value));
    }
    template <class T>
    T get(DeviceNodeBufferData* record, const QString& name)
    {
        return std::get<T>(property(record, name, Zerlane::propertyTypeOf<T>()));
    }
};
