#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;
struct SwsContext;

namespace Zerlane::recording {

// Decodes compressed colour frames (MJPEG) with libavcodec and converts them to B, G, R rows of the
// target size with libswscale. Throws Exception when a frame cannot be decoded.
class ColorDecoder {
public:
    ColorDecoder(int codecId, int targetWidth, int targetHeight);
    ~ColorDecoder();
    ColorDecoder(const ColorDecoder&) = delete;
    ColorDecoder& operator=(const ColorDecoder&) = delete;

    // One packet in, targetWidth x targetHeight x 3 bytes out.
    void decode(const uint8_t* data, int size, uint8_t* bgr);

private:
    AVCodecContext* m_codec = nullptr;
    AVFrame* m_frame = nullptr;
    AVPacket* m_packet = nullptr;
    SwsContext* m_scaler = nullptr;
    int m_width;
    int m_height;
};

} // namespace Zerlane::recording
