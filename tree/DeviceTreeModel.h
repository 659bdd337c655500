#pragma once

#include <QAbstractItemModel>
#include <QIcon>

class CameraManager;
class DeviceNodeBufferData;

// The three-level tree of devices, their nodes and the nodes' buffers. It owns no data: every index
// points at a record of the camera manager, and every record caches the index last built for it.
// Only buffers can be dragged; the drag data is the buffer record's address, valid in this process.
class DeviceTreeModel : public QAbstractItemModel {
    Q_OBJECT

public:
    explicit DeviceTreeModel(CameraManager* store);

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

    // Discovery's row changes: one device (invalid parent) or one node (a device as parent).
    virtual bool removeItem(int row, const QModelIndex& parent);
    virtual bool insertItem(int row, DeviceNodeBufferData* record, const QModelIndex& parent);

    QModelIndex indexOf(DeviceNodeBufferData* record) const;
    // Repaints a record's row after its flags changed.
    void refreshRecord(DeviceNodeBufferData* record);

    static DeviceNodeBufferData* recordOf(const QModelIndex& index);

private:
    QModelIndex cacheIndex(int row, int column, DeviceNodeBufferData* record) const;
    QVariant deviceData(DeviceNodeBufferData* record, int role) const;
    QVariant nodeData(DeviceNodeBufferData* record, int role) const;
    QVariant bufferData(DeviceNodeBufferData* record, int role) const;
    // The tool tip of a device or node row: "Registered", "Controlled", both, or "Not registered".
    static QString stateText(bool registered, bool controlled);

    CameraManager* m_store;
    QIcon m_deviceIcon;
    QIcon m_audioIcon;
    QIcon m_colourIcon;
    QIcon m_depthIcon;
    QIcon m_unsupportedIcon;
};
