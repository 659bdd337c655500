#include "ColorDecoder.h"

#include "Zerlane/Exceptions.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

#include <cstring>

namespace Zerlane::recording {

ColorDecoder::ColorDecoder(int codecId, int targetWidth, int targetHeight)
    : m_width(targetWidth), m_height(targetHeight)
{
    const AVCodec* codec = avcodec_find_decoder(AVCodecID(codecId));
    if (!codec)
        throw Exception(std::string("no decoder for colour codec ") + avcodec_get_name(AVCodecID(codecId)));
    m_codec = avcodec_alloc_context3(codec);
    m_frame = av_frame_alloc();
    m_packet = av_packet_alloc();
    if (!m_codec || !m_frame || !m_packet) {
        this->~ColorDecoder();
        throw Exception("out of memory for the colour decoder");
    }
    m_codec->thread_count = 1;
    if (avcodec_open2(m_codec, codec, nullptr) < 0) {
        this->~ColorDecoder();
        throw Exception(std::string("cannot open the decoder of ") + codec->name);
    }
}

ColorDecoder::~ColorDecoder()
{
    sws_freeContext(m_scaler);
    m_scaler = nullptr;
    av_packet_free(&m_packet);
    av_frame_free(&m_frame);
    avcodec_free_context(&m_codec);
}

void ColorDecoder::decode(const uint8_t* data, int size, uint8_t* bgr)
{
    if (av_new_packet(m_packet, size) < 0)
        throw Exception("out of memory decoding a colour frame");
    std::memcpy(m_packet->data, data, size_t(size));
    int error = avcodec_send_packet(m_codec, m_packet);
    av_packet_unref(m_packet);
    if (error >= 0)
        error = avcodec_receive_frame(m_codec, m_frame);
    if (error < 0 || m_frame->width <= 0 || m_frame->height <= 0)
        throw Exception("a colour frame cannot be decoded");
    // The JPEG decoder reports full-range YUV formats as the deprecated "J" formats; treat them as such.
    AVPixelFormat format = AVPixelFormat(m_frame->format);
    switch (format) {
    case AV_PIX_FMT_YUVJ420P: format = AV_PIX_FMT_YUV420P; break;
    case AV_PIX_FMT_YUVJ422P: format = AV_PIX_FMT_YUV422P; break;
    case AV_PIX_FMT_YUVJ444P: format = AV_PIX_FMT_YUV444P; break;
    default: break;
    }
    m_scaler = sws_getCachedContext(m_scaler, m_frame->width, m_frame->height, format, m_width, m_height,
                                    AV_PIX_FMT_BGR24, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!m_scaler)
        throw Exception("a colour frame cannot be converted");
    if (format != AVPixelFormat(m_frame->format)) {
        const int* coefficients = sws_getCoefficients(SWS_CS_ITU601);
        sws_setColorspaceDetails(m_scaler, coefficients, 1, coefficients, 0, 0, 1 << 16, 1 << 16);
    }
    uint8_t* planes[4] = {bgr, nullptr, nullptr, nullptr};
    int strides[4] = {m_width * 3, 0, 0, 0};
    sws_scale(m_scaler, m_frame->data, m_frame->linesize, 0, m_frame->height, planes, strides);
    av_frame_unref(m_frame);
}

} // namespace Zerlane::recording
