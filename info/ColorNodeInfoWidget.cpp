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
    , m_box(colorFields())
{
    connect(this, &ColorNodeInfoWidget::setColorConfig, context->worker(), &WorkingThread::onSetColorConfig);
}

Configuration ColorNodeInfoWidget::current() const
{
    return context()->colorConfiguration(node());
}

void ColorNodeInfoWidget::generate()
{
    addNodeFacts();
    addPropertyEditors(node()->properties, true);
    addConfigurationRows(m_box.build(this, *static_cast<ColorNodeData*>(node())->configurations, current()));
}

bool ColorNodeInfoWidget::hasPendingChanges() const
{
    return m_box.differsFrom(current());
}

QString ColorNodeInfoWidget::pendingChangesText() const
{
    return m_box.changesFrom(current());
}

void ColorNodeInfoWidget::discardChanges()
{
    m_box.select(current());
}

void ColorNodeInfoWidget::applyChanges()
{
    if (!idle())
        return;
    const Configuration configuration = m_box.selection(current());
    node()->incrementActive(); // until the worker's jobDone
    emit setColorConfig(node(), configuration);
}

void ColorNodeInfoWidget::colorConfigurationChanged(NodeData* changed, const Configuration& configuration,
                                                    const Configuration&)
{
    if (changed == node())
        m_box.select(configuration);
}
