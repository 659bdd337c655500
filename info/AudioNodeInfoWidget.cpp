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
    , m_box(audioFields())
{
    connect(this, &AudioNodeInfoWidget::setAudioConfig, context->worker(), &WorkingThread::onSetAudioConfig);
}

Configuration AudioNodeInfoWidget::current() const
{
    return context()->audioConfiguration(node());
}

void AudioNodeInfoWidget::generate()
{
    addNodeFacts();
    addPropertyEditors(node()->properties, true);
    addConfigurationRows(m_box.build(this, *static_cast<AudioNodeData*>(node())->configurations, current()));
}

bool AudioNodeInfoWidget::hasPendingChanges() const
{
    return m_box.differsFrom(current());
}

QString AudioNodeInfoWidget::pendingChangesText() const
{
    return m_box.changesFrom(current());
}

void AudioNodeInfoWidget::discardChanges()
{
    m_box.select(current());
}

void AudioNodeInfoWidget::applyChanges()
{
    if (!idle())
        return;
    const Configuration configuration = m_box.selection(current());
    node()->incrementActive(); // until the worker's jobDone
    emit setAudioConfig(node(), configuration);
}

void AudioNodeInfoWidget::audioConfigurationChanged(NodeData* changed, const Configuration& configuration,
                                                    const Configuration&)
{
    if (changed == node())
        m_box.select(configuration);
}
