#pragma once

#include "Zerlane/AudioNode.h"
#include "Zerlane/ColorNode.h"
#include "Zerlane/DepthNode.h"
#include "Zerlane/Device.h"
#include "Zerlane/Property.h"

#include <QList>
#include <QPointer>
#include <QScrollArea>

class DeviceData;
class InfoContext;
class NodeData;

// The right-hand info panel. It shows one content at a time (a one-line message, a device page or a
// node page) and passes the camera's property and configuration notifications on to it. It never
// swaps its content under an open modal dialog: a change made meanwhile is postponed until the last
// modal widget has closed, and notifications already reach the postponed content.
class InfoWidget : public QScrollArea {
    Q_OBJECT

public:
    explicit InfoWidget(QWidget* parent = nullptr);

    // The pages read and write the camera through this context (not owned); set before the first
    // device or node is shown.
    void setContext(InfoContext* context);

    void showMessage(const QString& text);
    void showNothing();
    void showDevice(DeviceData* device);
    void showNode(NodeData* node);
    // When the node page shown has configuration edits not yet applied, asks whether to apply them:
    // Yes applies them, No discards them and repaints the page.
    void askToApplyPendingChanges();

    void devicePropertyChanged(const Zerlane::Device& device, const Zerlane::PropertyBase& property);
    void nodePropertyChanged(const Zerlane::Node& node, const Zerlane::PropertyBase& property);
    void depthConfigurationChanged(NodeData* node, const Zerlane::DepthNode::Configuration& configuration,
                                   const Zerlane::DepthNode::Configuration& previous);
    void colorConfigurationChanged(NodeData* node, const Zerlane::ColorNode::Configuration& configuration,
                                   const Zerlane::ColorNode::Configuration& previous);
    void audioConfigurationChanged(NodeData* node, const Zerlane::AudioNode::Configuration& configuration,
                                   const Zerlane::AudioNode::Configuration& previous);

    // A worker job on the node has ended: its page shows the configuration the node runs now, so a
    // configuration the camera refused does not stay in the combos.
    void jobDone(NodeData* node);

    // The content shown, or about to be shown once the modal widgets have closed.
    QWidget* content() const { return m_content; }
    // Wide enough to show the content without a horizontal scroll bar.
    QSize sizeHint() const override;

signals:
    // A content was installed that needs this width to be read without scrolling sideways.
    void contentWidthWanted(int width);

protected:
    bool event(QEvent* event) override;

private:
    void setContent(QWidget* widget);
    void install(QWidget* widget);
    // Contents that were waiting for the modal widgets to close and have been replaced since.
    void discardWaitingContents(QWidget* installed);

    InfoContext* m_context = nullptr;
    QPointer<QWidget> m_content;
    QList<QPointer<QWidget>> m_waiting;
};
