#include "info/NodeInfoWidget.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/UnsupportedNode.h"
#include "Zerlane/Utils/Format.h"
#include "app/shared/TextUtils.h"
#include "app/shared/ViewerLog.h"
#include "camera/NodeData.h"
#include "info/PendingConfiguration.h"
#include "widgets/QHLine.h"

#include <QLabel>
#include <QPushButton>

using Zerlane::Utils::Format;

namespace {

QString usbIdText(int32_t id)
{
    return QString("%1").arg(uint32_t(id) & 0xffffu, 4, 16, QChar('0')).toUpper();
}

} // namespace

NodeInfoWidget::NodeInfoWidget(NodeData* node, InfoContext* context, QWidget* parent)
    : PropertyPanel(node, Zerlane::Interface(node->node), context, parent)
{
}

NodeData* NodeInfoWidget::node() const
{
    return static_cast<NodeData*>(record());
}

void NodeInfoWidget::generate()
{
    addNodeFacts();
}

void NodeInfoWidget::addNodeFacts()
{
    const Zerlane::Node& handle = node()->node;
    auto label = [this](const QString& text) { return new QLabel(text, this); };
    try {
        addRow("Node type :", label(nodeKindText(handle)));
        if (handle.is<Zerlane::UnsupportedNode>()) {
            const auto reason = Zerlane::UnsupportedNode(handle).getReason();
            addRow("Reason : ", label(QString::fromStdString(Zerlane::UnsupportedNode::Reason_toString(reason))));
        }
        addRow("Media interface :", label(QString::number(handle.getMediaInterface())));
        addRow("VID :", label(usbIdText(handle.getVID())));
        addRow("PID :", label(usbIdText(handle.getPID())));
        addRow("Serial :", label(QString::fromStdString(handle.getSerialNumber())));
        addRow("Revision :", label(QString::number(handle.getRevision())));
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Format("Could not generate node info: %") % e.getMessage());
    }
}

void NodeInfoWidget::addConfigurationRows(const QList<QPair<QString, QWidget*>>& rows,
                                          PendingConfiguration* configuration)
{
    m_configuration = configuration;
    addFullWidthRow(new QHLine(this));
    for (const auto& [label, combo] : rows)
        addRow(label, combo);
    auto* button = new QPushButton("Set Configuration", this);
    connect(button, &QPushButton::clicked, this, &NodeInfoWidget::on_setConfig);
    addFullWidthRow(button);
}

bool NodeInfoWidget::idle() const
{
    return node()->activeCount() == 0;
}

void NodeInfoWidget::propertyChanged(const Zerlane::Node& handle, const Zerlane::PropertyBase& property)
{
    if (handle != node()->node)
        return;
    if (property.isReadOnly()) {
        readOnlyPropertyChanged(property);
        return;
    }
    refreshEditor(property);
}

bool NodeInfoWidget::hasPendingChanges() const
{
    return m_configuration && m_configuration->hasChanges();
}

QString NodeInfoWidget::pendingChangesText() const
{
    return m_configuration ? m_configuration->changesText() : QString();
}

void NodeInfoWidget::discardChanges()
{
    if (m_configuration)
        m_configuration->discard();
}

void NodeInfoWidget::applyChanges()
{
    // A press while the worker still applies the last one is ignored.
    if (!m_configuration || !idle())
        return;
    node()->incrementActive(); // until the worker's jobDone
    m_configuration->apply();
}

void NodeInfoWidget::readOnlyPropertyChanged(const Zerlane::PropertyBase&) {}

void NodeInfoWidget::depthConfigurationChanged(NodeData*, const Zerlane::DepthNode::Configuration&,
                                               const Zerlane::DepthNode::Configuration&)
{
}

void NodeInfoWidget::colorConfigurationChanged(NodeData*, const Zerlane::ColorNode::Configuration&,
                                               const Zerlane::ColorNode::Configuration&)
{
}

void NodeInfoWidget::audioConfigurationChanged(NodeData*, const Zerlane::AudioNode::Configuration&,
                                               const Zerlane::AudioNode::Configuration&)
{
}

void NodeInfoWidget::on_setConfig()
{
    applyChanges();
}
