#include "info/AudioNodeInfoWidget.h"

#include "camera/AudioNodeData.h"
#include "info/InfoContext.h"
#include "worker/WorkingThread.h"

using Configuration = Zerlane::AudioNode::Configuration;

namespace {

std::vector<ConfigurationBox<Configuration>::Field> audioFields()
{
    auto number = [](int value) { return QString::number(value); };
    return {
        {"Sampling rate :", [](const Configuration& c) { return int(c.audioFormat.sampleRate); },
         [](Configuration& c, int v) { c.audioFormat.sampleRate = v; }, [](int v) { return QString("%1Hz").arg(v); },
         " - Sample rate changed from %1 to %2.\n", number, {}},
        {"Bits per sample :", [](const Configuration& c) { return int(c.audioFormat.bitsPerSample); },
         [](Configuration& c, int v) { c.audioFormat.bitsPerSample = v; }, number,
         " - Bits per sample changed from %1 to %2.\n", number, {}},
        {"Channels :", [](const Configuration& c) { return int(c.audioFormat.nbChannels); },
         [](Configuration& c, int v) { c.audioFormat.nbChannels = v; }, number,
         " - Channels changed from %1fps to %2fps.\n", number, {}},
    };
}

} // namespace

AudioNodeInfoWidget::AudioNodeInfoWidget(NodeData* node, InfoContext* context, QWidget* parent)
    : NodeInfoWidget(node, context, parent)
    , m_box(audioFields(), [this] { return this->context()->audioConfiguration(this->node()); },
            [this](const Configuration& chosen) { emit setAudioConfig(this->node(), chosen); })
{
    connect(this, &AudioNodeInfoWidget::setAudioConfig, context->worker(), &WorkingThread::onSetAudioConfig);
}

void AudioNodeInfoWidget::generate()
{
    addNodeFacts();
    addPropertyEditors(node()->properties, true);
    addConfigurationRows(m_box.build(this, *static_cast<AudioNodeData*>(node())->configurations), &m_box);
}

void AudioNodeInfoWidget::audioConfigurationChanged(NodeData* changed, const Configuration& configuration,
                                                    const Configuration&)
{
    if (changed == node())
        m_box.select(configuration);
}
