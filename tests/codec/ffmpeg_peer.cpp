// SPDX-License-Identifier: Apache-2.0
#include "ffmpeg_peer.h"

#include <stdexcept>

#if QELJX_HAS_AVCODEC

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixdesc.h>
}

#include <cstring>
#include <memory>
#include <vector>

namespace qel::test {

using namespace codec;

namespace {

struct Free {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
template <class T> using Owned = std::unique_ptr<T, Free>;

void require(bool isTrue, const char* what)
{
    if (!isTrue) throw std::runtime_error(what);
}

ColourSpace spaceOf(AVPixelFormat format)
{
    const int components = av_pix_fmt_desc_get(format)->nb_components;
    require(components == 1 || components == 3 || components == 4, "FFmpeg gives pixels of another kind");
    return components == 1 ? ColourSpace::grey : components == 3 ? ColourSpace::rgb : ColourSpace::cmyk;
}

template <class T> void take(Picture& picture, int y, const uint8_t* from)
{
    for (size_t i = 0; i < picture.step() / sizeof(T); ++i) {
        T sample = 0;
        std::memcpy(&sample, from + i * sizeof(T), sizeof(T));
        picture.row<T>(y)[i] = T(sample >> (8 * int(sizeof(T)) - picture.precision()));
    }
}

}

Picture ffmpegDecode(Bytes file, int precision)
{
    av_log_set_level(AV_LOG_FATAL);
    const AVCodec* decoder = avcodec_find_decoder_by_name("jpeg2000");
    require(decoder != nullptr, "FFmpeg has no JPEG 2000");
    Owned<AVCodecContext> context(avcodec_alloc_context3(decoder));
    Owned<AVFrame> frame(av_frame_alloc());
    Owned<AVPacket> packet(av_packet_alloc());
    require(context && frame && packet, "FFmpeg has no memory");
    context->err_recognition = AV_EF_EXPLODE;
    require(avcodec_open2(context.get(), decoder, nullptr) == 0, "FFmpeg's decoder does not open");

    std::vector<uint8_t> padded(file.begin(), file.end());
    padded.resize(file.size() + AV_INPUT_BUFFER_PADDING_SIZE);
    packet->data = padded.data(), packet->size = int(file.size());
    require(avcodec_send_packet(context.get(), packet.get()) == 0, "FFmpeg takes no such file");
    require(avcodec_receive_frame(context.get(), frame.get()) == 0, "FFmpeg gives no picture");

    Picture picture(frame->width, frame->height, spaceOf(AVPixelFormat(frame->format)), precision);
    for (int y = 0; y < picture.height(); ++y)
        (precision <= 8 ? take<uint8_t> : take<uint16_t>)(picture, y,
                                                          frame->data[0] + ptrdiff_t(frame->linesize[0]) * y);
    return picture;
}

}

#else

namespace qel::test {

codec::Picture ffmpegDecode(codec::Bytes, int) { throw std::runtime_error("FFmpeg is not there"); }

}

#endif
