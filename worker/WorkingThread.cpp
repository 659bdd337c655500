#include "worker/WorkingThread.h"

#include "events/CameraManager.h"

WorkingThread::WorkingThread() = default;

WorkingThread::~WorkingThread()
{
    quit();
    wait();
}

void WorkingThread::run()
{
    m_manager = CameraManager::instance();
    exec();
}

template <class Apply>
void WorkingThread::applyConfiguration(NodeData* nodeData, const char* nodeName, Apply apply)
{
    const QString failure = QString("Could not set %1 Node configuration :   \n\n").arg(nodeName);
    try {
        apply();
    } catch (const Zerlane::ArgumentException&) {
        emit popup(2, failure + "Invalid configuration");
    } catch (const Zerlane::Exception& e) {
        emit popup(2, failure + QString::fromStdString(e.getMessage()));
    }
    emit jobDone(nodeData);
}

void WorkingThread::onSetDepthConfig(NodeData* nodeData, Zerlane::DepthNode::Configuration config)
{
    applyConfiguration(nodeData, "Depth", [&] { m_manager->setDepthConfiguration(nodeData, config, true); });
}

void WorkingThread::onSetColorConfig(NodeData* nodeData, Zerlane::ColorNode::Configuration config)
{
    applyConfiguration(nodeData, "Color", [&] { m_manager->setColorConfiguration(nodeData, config, true); });
}

void WorkingThread::onSetAudioConfig(NodeData* nodeData, Zerlane::AudioNode::Configuration config)
{
    applyConfiguration(nodeData, "Audio", [&] { m_manager->setAudioConfiguration(nodeData, config, true); });
}

void WorkingThread::onStartStreaming()
{
    try {
        m_manager->startNodes();
        emit streamingStarted(true);
    } catch (const Zerlane::Exception& e) {
        emit streamingStarted(false);
        emit popup(2, QString("Cannot start streaming : %1").arg(QString::fromStdString(e.getMessage())));
    }
}

void WorkingThread::onStopStreaming()
{
    try {
        m_manager->stopNodes();
        emit streamingStopped(true);
    } catch (const Zerlane::Exception& e) {
        emit streamingStopped(false);
        emit popup(2, QString("Cannot stop streaming : %1").arg(QString::fromStdString(e.getMessage())));
    }
}

void WorkingThread::onDeviceAdded(DeviceData*)
{
}

void WorkingThread::onNodeAdded(NodeData* nodeData)
{
    // The automatic workspace restore is not built yet: the node keeps its camera-side state, and the
    // job ends at once so that the main window drops its hold on the record.
    emit jobDone(nodeData);
}
