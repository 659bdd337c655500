#pragma once

#include "info/ConfigurationBox.h"
#include "info/NodeInfoWidget.h"

// The page of a audio node: facts, property editors and the sampling rate / bits per sample / channels configuration.
class AudioNodeInfoWidget : public NodeInfoWidget {
    Q_OBJECT

public:
    AudioNodeInfoWidget(NodeData* node, InfoContext* context, QWidget* parent);

    void generate() override;
    void audioConfigurationChanged(NodeData* node, const Zerlane::AudioNode::Configuration& configuration,
                                   const Zerlane::AudioNode::Configuration& previous) override;

    QComboBox* configurationCombo(int field) const { return m_box.combo(field); }

signals:
    void setAudioConfig(NodeData* node, Zerlane::AudioNode::Configuration configuration);

private:
    ConfigurationBox<Zerlane::AudioNode::Configuration> m_box;
};
