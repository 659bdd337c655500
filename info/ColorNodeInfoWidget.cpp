#include "info/ColorNodeInfoWidget.h"

#include "app/shared/TextUtils.h"
#include "camera/ColorNodeData.h"
#include "info/InfoContext.h"
#include "worker/WorkingThread.h"

using Configuration = Zerlane::ColorNode::Configuration;

namespace {

QString compressionName(int compression)
{
    return QString::fromStdString(Zerlane::CompressionType_toString(Zerlane::CompressionType(compression)));
}

std::vector<ConfigurationBox<Configuration>::Field> colorFields()
{
    using Box = ConfigurationBox<Configuration>;
    return {
        Box::frameFormatField(),
        {"Compression :", [](const Configuration& c) { return int(c.compression); },
         [](Configuration& c, int v) { c.compression = Zerlane::CompressionType(v); }, compressionName,
         " - Compression changed from %1 to %2.\n", compressionName, {}},
        Box::frameRateField(),
        {"PL freq :", [](const Configuration& c) { return int(c.powerLineFrequency); },
         [](Configuration& c, int v) { c.powerLineFrequency = Zerlane::PowerLineFrequency(v); },
         powerLineFrequencyText, " - Power line frequency changed from %1 to %2.\n", powerLineFrequencyText, {}},
    };
}

} // namespace

ColorNodeInfoWidget::ColorNodeInfoWidget(NodeData* node, InfoContext* context, QWidget* parent)
    : NodeInfoWidget(node, context, parent)
    , m_box(colorFields(), [this] { return this->context()->colorConfiguration(this->node()); },
            [this](const Configuration& chosen) { emit setColorConfig(this->node(), chosen); })
{
    connect(this, &ColorNodeInfoWidget::setColorConfig, context->worker(), &WorkingThread::onSetColorConfig);
}

void ColorNodeInfoWidget::generate()
{
    addNodeFacts();
    addPropertyEditors(node()->properties, true);
    addConfigurationRows(m_box.build(this, *static_cast<ColorNodeData*>(node())->configurations), &m_box);
}

void ColorNodeInfoWidget::colorConfigurationChanged(NodeData* changed, const Configuration& configuration,
                                                    const Configuration&)
{
    if (changed == node())
        m_box.select(configuration);
}
