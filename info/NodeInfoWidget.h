#pragma once

#include "info/PropertyPanel.h"

#include "Zerlane/AudioNode.h"
#include "Zerlane/ColorNode.h"
#include "Zerlane/DepthNode.h"

class NodeData;
class PendingConfiguration;

// The page of a selected node. This base shows the node's facts only (an unsupported node shows no
// more); the depth, colour and audio pages add the property editors and a configuration box whose
// edits stay on the page until applied.
class NodeInfoWidget : public PropertyPanel {
    Q_OBJECT

public:
    NodeInfoWidget(NodeData* node, InfoContext* context, QWidget* parent);

    NodeData* node() const;

    // The camera reported a property change of a node: a read-only property goes to
    // readOnlyPropertyChanged, any other shows its new value in its editor. Other nodes are ignored.
    // Throws what the camera throws.
    void propertyChanged(const Zerlane::Node& node, const Zerlane::PropertyBase& property);

public slots:
    virtual void generate();
    virtual bool hasPendingChanges() const;
    virtual QString pendingChangesText() const;
    virtual void discardChanges();
    virtual void applyChanges();
    virtual void readOnlyPropertyChanged(const Zerlane::PropertyBase& property);
    virtual void depthConfigurationChanged(NodeData* node, const Zerlane::DepthNode::Configuration& configuration,
                                           const Zerlane::DepthNode::Configuration& previous);
    virtual void colorConfigurationChanged(NodeData* node, const Zerlane::ColorNode::Configuration& configuration,
                                           const Zerlane::ColorNode::Configuration& previous);
    virtual void audioConfigurationChanged(NodeData* node, const Zerlane::AudioNode::Configuration& configuration,
                                           const Zerlane::AudioNode::Configuration& previous);
    // The "Set Configuration" button.
    void on_setConfig();

protected:
    void addNodeFacts();
    // A separator, the configuration rows, and the "Set Configuration" button on a row of its own.
    // The rows' edits are `configuration`'s, which the page keeps (not owned).
    void addConfigurationRows(const QList<QPair<QString, QWidget*>>& rows, PendingConfiguration* configuration);

private:
    // No job of the worker runs on the node (a second request would race the first).
    bool idle() const;

    PendingConfiguration* m_configuration = nullptr;
};
