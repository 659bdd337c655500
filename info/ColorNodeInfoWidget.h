#pragma once

#include "info/ConfigurationBox.h"
#include "info/NodeInfoWidget.h"

// The page of a color node: facts, property editors and the format / compression / frame rate / power-line frequency configuration.
class ColorNodeInfoWidget : public NodeInfoWidget {
    Q_OBJECT

public:
    ColorNodeInfoWidget(NodeData* node, InfoContext* context, QWidget* parent);

    void generate() override;
    void colorConfigurationChanged(NodeData* node, const Zerlane::ColorNode::Configuration& configuration,
                                   const Zerlane::ColorNode::Configuration& previous) override;

    QComboBox* configurationCombo(int field) const { return m_box.combo(field); }

signals:
    void setColorConfig(NodeData* node, Zerlane::ColorNode::Configuration configuration);

private:
    ConfigurationBox<Zerlane::ColorNode::Configuration> m_box;
};
