#include "info/DepthNodeInfoWidget.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Format.h"
#include "app/shared/ViewerLog.h"
#include "camera/DepthNodeData.h"
#include "info/InfoContext.h"
#include "worker/WorkingThread.h"

#include <QCheckBox>
#include <QLabel>

using Configuration = Zerlane::DepthNode::Configuration;
using Zerlane::Utils::Format;

namespace {

QString modeName(int mode)
{
    return QString::fromStdString(Zerlane::DepthNode::CameraMode_toString(Zerlane::CameraMode(mode)));
}

std::vector<ConfigurationBox<Configuration>::Field> depthFields()
{
    using Box = ConfigurationBox<Configuration>;
    return {
        Box::frameFormatField(),
        Box::frameRateField(),
        {"Mode :", [](const Configuration& c) { return int(c.mode); },
         [](Configuration& c, int v) { c.mode = Zerlane::CameraMode(v); }, modeName,
         " - mode changed from %1 to %2.\n", modeName, {}},
        {"Saturation :", [](const Configuration& c) { return int(c.saturation); },
         [](Configuration& c, int v) { c.saturation = v != 0; },
         [](int v) { return QString(v ? "Enabled" : "Disabled"); }, " - saturation changed from %1 to %2.\n",
         [](int v) { return QString(v ? "enabled" : "disabled"); }, {1, 0}},
    };
}

} // namespace

DepthNodeInfoWidget::DepthNodeInfoWidget(NodeData* node, InfoContext* context, QWidget* parent)
    : NodeInfoWidget(node, context, parent)
    , m_box(depthFields(), [this] { return this->context()->depthConfiguration(this->node()); },
            [this](const Configuration& chosen) { emit setDepthConfig(this->node(), chosen); })
{
    connect(this, &DepthNodeInfoWidget::setDepthConfig, context->worker(), &WorkingThread::onSetDepthConfig);
}

void DepthNodeInfoWidget::generate()
{
    addNodeFacts();
    addRangeRow();
    addPropertyEditors(node()->properties, true);
    if (context()->showHidden())
        addNoFanBox();
    addConfigurationRows(m_box.build(this, *static_cast<DepthNodeData*>(node())->configurations), &m_box);
}

void DepthNodeInfoWidget::addRangeRow()
{
    try {
        const float range = Zerlane::DepthNode(node()->node).getRange();
        m_range = new QLabel(this);
        showRange(range);
        addRow("Range : ", m_range);
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Format("Could not generate depth node info: %") % e.getMessage());
    }
}

void DepthNodeInfoWidget::showRange(float range)
{
    if (m_range)
        m_range->setText(QString("%1m").arg(double(range), 0, 'g', -1));
}

void DepthNodeInfoWidget::addNoFanBox()
{
    try {
        const Zerlane::PropertyBase property = node()->node.getType().getProperty("_noFan");
        if (!property.is<Zerlane::Property<bool>>())
            return;
        auto* box = new QCheckBox(this);
        box->setChecked(Zerlane::Property<bool>(property).getValue(interface()));
        // A switch for diagnosis that is shown only: clicking it sends nothing to the camera.
        addEditor(property, box, EditorFollowsCamera::No);
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Format("Could not generate property widget: %") % e.getMessage());
    }
}

void DepthNodeInfoWidget::readOnlyPropertyChanged(const Zerlane::PropertyBase& property)
{
    if (property.name() == "range" && property.is<Zerlane::Property<float>>())
        showRange(Zerlane::Property<float>(property).getValue(interface()));
}

void DepthNodeInfoWidget::depthConfigurationChanged(NodeData* changed, const Configuration& configuration,
                                                    const Configuration&)
{
    if (changed == node())
        m_box.select(configuration);
}
