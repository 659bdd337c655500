#pragma once

#include "FastRandom.h"

#include "Zerlane/Configurations.h"

#include <cstddef>
#include <cstdint>

namespace Zerlane::sim {

// The sound the simulated camera's microphones pick up: room tone (soft filtered noise) and the hum of
// the camera's fan, a little different on the second channel. Phases carry on from block to block so
// the signal is continuous. Not thread-safe.
class AudioSynth {
public:
    explicit AudioSynth(uint32_t seed);

    // Sample frames in one block (1/20 s) and its size in bytes.
    static int framesPerBlock(const AudioFormat& format);
    static std::size_t blockBytes(const AudioFormat& format);

    // Writes one block of interleaved little-endian 16-bit PCM. volume 0..100; humHz 0 means no fan.
    void render(const AudioFormat& format, int32_t volume, bool mute, float humHz, uint8_t* out);

private:
    double m_humPhase = 0.0;  // cycles
    double m_swellPhase = 0.0;
    float m_noiseState[2] = {0.f, 0.f};
    FastRandom m_random;
};

} // namespace Zerlane::sim
