#pragma once

#include "info/ConfigurationBox.h"
#include "info/NodeInfoWidget.h"

class QLabel;

// The page of a depth node: facts, the camera's range, property editors, the hidden fan switch when
// hidden properties are offered, and the format / frame rate / mode / saturation configuration.
class DepthNodeInfoWidget : public NodeInfoWidget {
    Q_OBJECT

public:
    DepthNodeInfoWidget(NodeData* node, InfoContext* context, QWidget* parent);

    void generate() override;
    void readOnlyPropertyChanged(const Zerlane::PropertyBase& property) override;
    void depthConfigurationChanged(NodeData* node, const Zerlane::DepthNode::Configuration& configuration,
                                   const Zerlane::DepthNode::Configuration& previous) override;

    QComboBox* configurationCombo(int field) const { return m_box.combo(field); }

signals:
    void setDepthConfig(NodeData* node, Zerlane::DepthNode::Configuration configuration);

private:
    void addRangeRow();
    void addNoFanBox();
    void showRange(float range);
    QLabel* m_range = nullptr;
    ConfigurationBox<Zerlane::DepthNode::Configuration> m_box;
};
