#include "mainwindow/ViewStatistics.h"

#include "camera/BufferData.h"
#include "camera/NodeData.h"

#include <algorithm>

ViewStatistics::ViewStatistics()
{
    m_clock.start();
}

void ViewStatistics::closeInterval(const std::vector<NodeData*>& nodes)
{
    const qint64 elapsed = std::max<qint64>(1, m_clock.elapsed());
    m_factor = 1000.0 / double(elapsed);
    m_eventRates.clear();
    for (NodeData* node : nodes)
        m_eventRates[node] = node->sampleCount.exchange(0) * m_factor;
}

QString ViewStatistics::takeViewLine(BufferData* buffer, int paints)
{
    const double frameRate = buffer->frameCount.exchange(0) * m_factor;
    return infoLine(frameRate, eventRate(buffer->node), paints * m_factor);
}

void ViewStatistics::restart()
{
    m_clock.restart();
}

QString ViewStatistics::infoLine(double frameRate, double eventRate, double paintRate)
{
    auto rate = [](double value) { return QString("%1").arg(value, 2, 'f', 0); };
    return QString("Frame rate : %1      Event rate : %2      Paint rate : %3")
        .arg(rate(frameRate), rate(eventRate), rate(paintRate));
}
