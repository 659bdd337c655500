#pragma once

#include "Zerlane/plugin/SampleSink.h"

#include <mutex>
#include <vector>

// A SampleSink that keeps every sample it is handed.
class CollectingSink : public Zerlane::plugin::SampleSink {
public:
    void depthSample(Zerlane::plugin::NodeDriver*, Zerlane::DepthNode::NewSampleReceivedData&& sample) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_depth.push_back(std::move(sample));
    }
    void colorSample(Zerlane::plugin::NodeDriver*, Zerlane::ColorNode::NewSampleReceivedData&& sample) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_color.push_back(std::move(sample));
    }
    void audioSample(Zerlane::plugin::NodeDriver*, Zerlane::AudioNode::NewSampleReceivedData&& sample) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_audio.push_back(std::move(sample));
    }

    std::vector<Zerlane::DepthNode::NewSampleReceivedData> depth()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_depth;
    }
    std::vector<Zerlane::ColorNode::NewSampleReceivedData> color()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_color;
    }
    std::vector<Zerlane::AudioNode::NewSampleReceivedData> audio()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_audio;
    }
    void clear()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_depth.clear();
        m_color.clear();
        m_audio.clear();
    }

private:
    std::mutex m_mutex;
    std::vector<Zerlane::DepthNode::NewSampleReceivedData> m_depth;
    std::vector<Zerlane::ColorNode::NewSampleReceivedData> m_color;
    std::vector<Zerlane::AudioNode::NewSampleReceivedData> m_audio;
};
