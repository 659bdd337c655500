#include "tree/DeviceTreeModel.h"

#include "app/shared/TextUtils.h"
#include "camera/BufferData.h"
#include "Zerlane/Zerlane.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"

#include <QDataStream>
#include <QFont>
#include <QIODevice>
#include <QMimeData>

DeviceTreeModel::DeviceTreeModel(CameraManager* store)
    : QAbstractItemModel(nullptr)
    , m_store(store)
    , m_deviceIcon(":/images/device.png")
    , m_audioIcon(":/images/audio.png")
    , m_colourIcon(":/images/colour.png")
    , m_depthIcon(":/images/depth.png")
    , m_unsupportedIcon(":/images/unsupported.png")
{
}

DeviceNodeBufferData* DeviceTreeModel::recordOf(const QModelIndex& index)
{
    return index.isValid() ? static_cast<DeviceNodeBufferData*>(index.internalPointer()) : nullptr;
}

QModelIndex DeviceTreeModel::cacheIndex(int row, int column, DeviceNodeBufferData* record) const
{
    record->modelIndex = createIndex(row, column, record);
    return record->modelIndex;
}

QModelIndex DeviceTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return QModelIndex();
    DeviceNodeBufferData* record = nullptr;
    DeviceNodeBufferData* parentRecord = recordOf(parent);
    if (!parentRecord) {
        record = m_store->deviceAt(row);
    } else if (parentRecord->kind() == DeviceNodeBufferData::KindDevice) {
        const auto& nodes = static_cast<DeviceData*>(parentRecord)->nodes;
        record = row < int(nodes.size()) ? nodes[size_t(row)] : nullptr;
    } else if (parentRecord->kind() == DeviceNodeBufferData::KindNode) {
        const auto& buffers = static_cast<NodeData*>(parentRecord)->buffers;
        record = row < int(buffers.size()) ? buffers[size_t(row)] : nullptr;
    }
    return record ? cacheIndex(row, column, record) : QModelIndex();
}

QModelIndex DeviceTreeModel::parent(const QModelIndex& index) const
{
    DeviceNodeBufferData* record = recordOf(index);
    if (!record)
        return QModelIndex();
    DeviceNodeBufferData* parentRecord = nullptr;
    if (record->kind() == DeviceNodeBufferData::KindNode)
        parentRecord = static_cast<NodeData*>(record)->device;
    else if (record->kind() == DeviceNodeBufferData::KindBuffer)
        parentRecord = static_cast<BufferData*>(record)->node;
    return parentRecord ? cacheIndex(parentRecord->position, 0, parentRecord) : QModelIndex();
}

int DeviceTreeModel::rowCount(const QModelIndex& parent) const
{
    if (parent.column() > 0)
        return 0;
    DeviceNodeBufferData* record = recordOf(parent);
    if (!record)
        return m_store->deviceCount();
    switch (record->kind()) {
    case DeviceNodeBufferData::KindDevice:
        return int(static_cast<DeviceData*>(record)->nodes.size());
    case DeviceNodeBufferData::KindNode:
        return int(static_cast<NodeData*>(record)->buffers.size());
    default:
        return 0;
    }
}

int DeviceTreeModel::columnCount(const QModelIndex&) const
{
    return 1;
}

QVariant DeviceTreeModel::data(const QModelIndex& index, int role) const
{
    DeviceNodeBufferData* record = recordOf(index);
    if (!record)
        return QVariant();
    switch (record->kind()) {
    case DeviceNodeBufferData::KindDevice:
        return deviceData(record, role);
    case DeviceNodeBufferData::KindNode:
        return nodeData(record, role);
    case DeviceNodeBufferData::KindBuffer:
        return bufferData(record, role);
    default:
        return QVariant();
    }
}

QVariant DeviceTreeModel::deviceData(DeviceNodeBufferData* record, int role) const
{
    auto* device = static_cast<DeviceData*>(record);
    if (role == Qt::DecorationRole)
        return m_deviceIcon;
    if (role == Qt::ToolTipRole)
        return stateText(device->registered, device->controlled);
    if (role != Qt::DisplayRole)
        return QVariant();
    return deviceText(device->device);
}

QVariant DeviceTreeModel::nodeData(DeviceNodeBufferData* record, int role) const
{
    auto* node = static_cast<NodeData*>(record);
    const Zerlane::Node& handle = node->node;
    if (role == Qt::DisplayRole)
        return nodeKindText(handle);
    if (role == Qt::DecorationRole) {
        if (handle.is<Zerlane::AudioNode>())
            return m_audioIcon;
        if (handle.is<Zerlane::ColorNode>())
            return m_colourIcon;
        if (handle.is<Zerlane::DepthNode>())
            return m_depthIcon;
        return m_unsupportedIcon;
    }
    if (role == Qt::ToolTipRole)
        return stateText(node->registered, node->controlled);
    if (role == Qt::FontRole) {
        // Bold while registered; italic while registered but not under this program's control.
        QFont font;
        font.setWeight(node->registered ? QFont::Bold : QFont::Normal);
        font.setItalic(node->registered && !node->controlled);
        return font;
    }
    return QVariant();
}

// What the row's font shows, in words.
QString DeviceTreeModel::stateText(bool registered, bool controlled)
{
    if (registered && controlled)
        return "Registered and controlled";
    if (registered)
        return "Registered";
    if (controlled)
        return "Controlled";
    return "Not registered";
}

QVariant DeviceTreeModel::bufferData(DeviceNodeBufferData* record, int role) const
{
    auto* buffer = static_cast<BufferData*>(record);
    if (role == Qt::DisplayRole)
        return buffer->typeName();
    if (role == Qt::FontRole) {
        QFont font;
        font.setWeight(buffer->subWindow ? QFont::Bold : QFont::Normal);
        return font;
    }
    return QVariant();
}

QVariant DeviceTreeModel::headerData(int, Qt::Orientation orientation, int role) const
{
    if (role == Qt::DisplayRole && orientation == Qt::Horizontal)
        return QString("Devices");
    return QVariant();
}

Qt::ItemFlags DeviceTreeModel::flags(const QModelIndex& index) const
{
    DeviceNodeBufferData* record = recordOf(index);
    if (!record)
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    if (record->kind() == DeviceNodeBufferData::KindBuffer)
        flags |= Qt::ItemIsDragEnabled;
    return flags;
}

QMimeData* DeviceTreeModel::mimeData(const QModelIndexList& indexes) const
{
    if (indexes.isEmpty())
        return nullptr;
    const QStringList types = mimeTypes();
    if (types.isEmpty())
        return nullptr;
    auto* mime = new QMimeData();
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << qint64(reinterpret_cast<quintptr>(indexes.first().internalPointer()));
    mime->setData(types.first(), bytes);
    return mime;
}

bool DeviceTreeModel::insertItem(int row, DeviceNodeBufferData* record, const QModelIndex& parent)
{
    if (parent.isValid()) {
        if (record->kind() != DeviceNodeBufferData::KindNode)
            return false;
        beginInsertRows(parent, row, row);
        m_store->appendNodeToDevice(static_cast<NodeData*>(record));
        endInsertRows();
    } else {
        beginInsertRows(QModelIndex(), row, row);
        m_store->appendDevice(static_cast<DeviceData*>(record));
        endInsertRows();
    }
    record->modelIndex = index(row, 0, parent);
    return true;
}

bool DeviceTreeModel::removeItem(int row, const QModelIndex& parent)
{
    DeviceNodeBufferData* parentRecord = recordOf(parent);
    if (parentRecord) {
        if (parentRecord->kind() != DeviceNodeBufferData::KindDevice)
            return false;
        beginRemoveRows(parent, row, row);
        m_store->removeNodeAt(static_cast<DeviceData*>(parentRecord), row);
        endRemoveRows();
        return true;
    }
    beginRemoveRows(QModelIndex(), row, row);
    m_store->removeDeviceAt(row);
    endRemoveRows();
    return true;
}

QModelIndex DeviceTreeModel::indexOf(DeviceNodeBufferData* record) const
{
    // Built from the record's position, so it stays right after rows above it went away.
    return record ? cacheIndex(record->position, 0, record) : QModelIndex();
}

void DeviceTreeModel::refreshRecord(DeviceNodeBufferData* record)
{
    const QModelIndex index = indexOf(record);
    if (index.isValid())
        emit dataChanged(index, index);
}
