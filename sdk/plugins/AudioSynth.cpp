#include "AudioSynth.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Zerlane::sim {

AudioSynth::AudioSynth(uint32_t seed) : m_random(seed) {}

int AudioSynth::framesPerBlock(const AudioFormat& format)
{
    return std::max(format.sampleRate, 0) / 20;
}

std::size_t AudioSynth::blockBytes(const AudioFormat& format)
{
    return std::size_t(framesPerBlock(format)) * std::size_t(std::max(format.nbChannels, 0)) *
           std::size_t(std::max(format.bitsPerSample, 0) / 8);
}

void AudioSynth::render(const AudioFormat& format, int32_t volume, bool mute, float humHz, uint8_t* out)
{
    const int frames = framesPerBlock(format);
    const int channels = std::clamp(format.nbChannels, 1, 2);
    const double rate = double(std::max(format.sampleRate, 1));
    const float gain = mute ? 0.f : float(std::clamp(volume, 0, 100)) / 100.f;
    // A one-pole low-pass turns white noise into a duller room tone.
    const float smoothing = float(std::exp(-2.0 * M_PI * 900.0 / rate));

    for (int f = 0; f < frames; ++f) {
        const double hum = 2.0 * M_PI * m_humPhase;
        // The fan's loudness swells slowly, as airflow does.
        const double swell = 1.0 + 0.15 * std::sin(2.0 * M_PI * m_swellPhase);
        for (int c = 0; c < channels; ++c) {
            const float white = m_random.uniform() * 2.f - 1.f;
            m_noiseState[c] = smoothing * m_noiseState[c] + (1.f - smoothing) * white;
            const double offset = c == 0 ? 0.0 : 0.35; // the second microphone is further from the fan
            const double level = c == 0 ? 1.0 : 0.85;
            double signal = 0.0;
            if (humHz > 0.f)
                signal = level * swell *
                         (0.020 * std::sin(hum + offset) + 0.008 * std::sin(2.0 * hum + 2.0 * offset + 0.6) +
                          0.004 * std::sin(3.0 * hum + 3.0 * offset + 1.3));
            signal += 0.05 * m_noiseState[c];
            const int value = int(std::lround(std::clamp(signal * gain, -1.0, 1.0) * 32767.0));
            const std::size_t at = (std::size_t(f) * std::size_t(channels) + std::size_t(c)) * 2;
            out[at] = uint8_t(value & 0xff);
            out[at + 1] = uint8_t((value >> 8) & 0xff);
        }
        m_humPhase = std::fmod(m_humPhase + humHz / rate, 1.0);
        m_swellPhase = std::fmod(m_swellPhase + 0.3 / rate, 1.0);
    }
}

} // namespace Zerlane::sim
