#include "info/InfoWidget.h"

#include "Zerlane/Zerlane.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "info/AudioNodeInfoWidget.h"
#include "info/ColorNodeInfoWidget.h"
#include "info/DepthNodeInfoWidget.h"
#include "info/DeviceInfoWidget.h"
#include "widgets/ZRMessageBox.h"
#include "worker/InfoWidgetSetWidgetEvent.h"
#include "worker/PostponedCalls.h"

#include <QApplication>
#include <QLabel>
#include <QScrollBar>

InfoWidget::InfoWidget(QWidget* parent)
    : QScrollArea(parent)
{
    setWidgetResizable(true);
    showMessage("No device or node selected");
}

void InfoWidget::setContext(InfoContext* context)
{
    m_context = context;
}

void InfoWidget::showMessage(const QString& text)
{
    setContent(new QLabel(QString("\n     %1").arg(text), this));
}

void InfoWidget::showNothing()
{
    showMessage("No device or node selected");
}

void InfoWidget::showDevice(DeviceData* device)
{
    Q_ASSERT(m_context);
    setContent(new DeviceInfoWidget(device, m_context, this));
}

void InfoWidget::showNode(NodeData* node)
{
    Q_ASSERT(m_context);
    NodeInfoWidget* page = nullptr;
    if (node->node.is<Zerlane::ColorNode>())
        page = new ColorNodeInfoWidget(node, m_context, this);
    else if (node->node.is<Zerlane::DepthNode>())
        page = new DepthNodeInfoWidget(node, m_context, this);
    else if (node->node.is<Zerlane::AudioNode>())
        page = new AudioNodeInfoWidget(node, m_context, this);
    else
        page = new NodeInfoWidget(node, m_context, this);
    page->generate();
    setContent(page);
}

void InfoWidget::askToApplyPendingChanges()
{
    auto* page = qobject_cast<NodeInfoWidget*>(m_content);
    if (!page || !page->hasPendingChanges())
        return;
    const QString text = QString("The following changes were not applied : \n\n%1\nDo you want to apply these changes ?")
                             .arg(page->pendingChangesText());
    ZRMessageBox box(QMessageBox::Question, "Node configuration changed", text, QMessageBox::Yes | QMessageBox::No);
    if (box.exec() == QMessageBox::Yes) {
        page->applyChanges();
    } else {
        page->discardChanges();
        page->repaint();
    }
}

void InfoWidget::devicePropertyChanged(const Zerlane::Device& device, const Zerlane::PropertyBase& property)
{
    if (auto* page = qobject_cast<DeviceInfoWidget*>(m_content))
        page->propertyChanged(device, property);
}

void InfoWidget::nodePropertyChanged(const Zerlane::Node& node, const Zerlane::PropertyBase& property)
{
    if (auto* page = qobject_cast<NodeInfoWidget*>(m_content))
        page->propertyChanged(node, property);
}

void InfoWidget::depthConfigurationChanged(NodeData* node, const Zerlane::DepthNode::Configuration& configuration,
                                           const Zerlane::DepthNode::Configuration& previous)
{
    if (auto* page = qobject_cast<NodeInfoWidget*>(m_content))
        page->depthConfigurationChanged(node, configuration, previous);
}

void InfoWidget::colorConfigurationChanged(NodeData* node, const Zerlane::ColorNode::Configuration& configuration,
                                           const Zerlane::ColorNode::Configuration& previous)
{
    if (auto* page = qobject_cast<NodeInfoWidget*>(m_content))
        page->colorConfigurationChanged(node, configuration, previous);
}

void InfoWidget::audioConfigurationChanged(NodeData* node, const Zerlane::AudioNode::Configuration& configuration,
                                           const Zerlane::AudioNode::Configuration& previous)
{
    if (auto* page = qobject_cast<NodeInfoWidget*>(m_content))
        page->audioConfigurationChanged(node, configuration, previous);
}

void InfoWidget::jobDone(NodeData* node)
{
    auto* page = qobject_cast<NodeInfoWidget*>(m_content);
    if (page && page->node() == node)
        page->discardChanges();
}

void InfoWidget::setContent(QWidget* widget)
{
    // Notifications reach the new content at once, even while its installation waits.
    m_content = widget;
    install(widget);
}

void InfoWidget::install(QWidget* widget)
{
    if (QApplication::activeModalWidget()) {
        if (!m_waiting.contains(widget))
            m_waiting.append(widget);
        PostponedCalls::instance()->setWidget(this, widget);
        return;
    }
    setWidget(widget); // deletes the content shown until now
    discardWaitingContents(widget);
    emit contentWidthWanted(sizeHint().width());
}

QSize InfoWidget::sizeHint() const
{
    QSize hint = QScrollArea::sizeHint();
    if (const QWidget* shown = widget()) {
        const int chrome = 2 * frameWidth() + verticalScrollBar()->sizeHint().width();
        hint.setWidth(shown->sizeHint().width() + chrome);
    }
    return hint;
}

void InfoWidget::discardWaitingContents(QWidget* installed)
{
    for (const QPointer<QWidget>& waiting : std::as_const(m_waiting)) {
        if (waiting && waiting != installed)
            delete waiting.data();
    }
    m_waiting.clear();
}

bool InfoWidget::event(QEvent* event)
{
    if (event->type() == InfoWidgetSetWidgetEvent::eventType()) {
        // Only the newest content is installed; an older one carried by a late event was replaced
        // (and deleted) meanwhile, so its pointer is compared, never followed.
        QWidget* carried = static_cast<InfoWidgetSetWidgetEvent*>(event)->widget();
        if (carried && carried == m_content)
            install(carried);
    }
    return QScrollArea::event(event);
}
