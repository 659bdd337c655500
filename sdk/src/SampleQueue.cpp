#include "SampleQueue.h"

namespace Zerlane::detail {

bool SampleQueue::push(Sample&& sample)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    bool grew = true;
    if (m_samples.size() >= CAPACITY) {
        // The discarded sample may itself report drops (by the plug-in, or by a server on the way):
        // they move on to the next sample delivered.
        std::visit([this](const auto& data) { m_droppedSinceDelivery += 1 + data.droppedSampleCount; },
                   m_samples.front());
        m_samples.pop_front();
        grew = false;
    }
    m_samples.push_back(std::move(sample));
    return grew;
}

std::optional<SampleQueue::Sample> SampleQueue::pop()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_samples.empty())
        return std::nullopt;
    Sample sample = std::move(m_samples.front());
    m_samples.pop_front();
    const int32_t dropped = m_droppedSinceDelivery;
    m_droppedSinceDelivery = 0;
    std::visit(
        [&](auto& data) {
            data.droppedSampleCount += dropped; // a plug-in may report drops of its own
            m_totalDropped += data.droppedSampleCount;
            data.droppedSampleTotalCount = m_totalDropped;
        },
        sample);
    return sample;
}

void SampleQueue::clear()
{
    std::deque<Sample> forgotten;
    std::lock_guard<std::mutex> lock(m_mutex);
    forgotten.swap(m_samples);
    m_droppedSinceDelivery = 0;
}

std::size_t SampleQueue::waiting() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_samples.size();
}

int32_t SampleQueue::totalDropped() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_totalDropped;
}

} // namespace Zerlane::detail
