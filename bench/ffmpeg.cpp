// SPDX-License-Identifier: Apache-2.0
#include "ffmpeg.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include "contest.h"

namespace qel::bench {
namespace {

struct FreeContext {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

}

// What a coder in either direction needs.
struct FfmpegCoder {
    std::unique_ptr<AVCodecContext, FreeContext> context;
    std::unique_ptr<AVFrame, FreeFrame> frame{av_frame_alloc()};
    std::unique_ptr<AVPacket, FreePacket> packet{av_packet_alloc()};

    explicit FfmpegCoder(const AVCodec* codec) : context(avcodec_alloc_context3(codec))
    {
        require(codec && context && frame && packet, "FFmpeg has no lossless JPEG");
        av_log_set_level(AV_LOG_ERROR);
        context->thread_count = 1;
    }
};

FfmpegLosslessEncoder::FfmpegLosslessEncoder(const codec::Picture& rgb)
    : coder_(std::make_unique<FfmpegCoder>(avcodec_find_encoder(AV_CODEC_ID_LJPEG)))
{
    auto set = [&](auto* object) { object->width = rgb.width(), object->height = rgb.height(); };
    set(coder_->context.get()), set(coder_->frame.get());
    coder_->context->pix_fmt = AV_PIX_FMT_YUVJ444P;
    coder_->context->time_base = {1, 1};
    coder_->frame->format = AV_PIX_FMT_YUVJ444P;
    require(avcodec_open2(coder_->context.get(), nullptr, nullptr) == 0, "FFmpeg's encoder does not open");
    require(av_frame_get_buffer(coder_->frame.get(), 0) == 0, "FFmpeg has no memory");
    for (int y = 0; y < rgb.height(); ++y)
        for (int i = 0; i < 3 * rgb.width(); ++i)
            coder_->frame->data[i % 3][y * coder_->frame->linesize[i % 3] + i / 3] = rgb.row(y)[i];
    encode();
    file_.assign(coder_->packet->data, coder_->packet->data + coder_->packet->size);
}

FfmpegLosslessEncoder::~FfmpegLosslessEncoder() = default;

void FfmpegLosslessEncoder::encode()
{
    require(avcodec_send_frame(coder_->context.get(), coder_->frame.get()) == 0, "FFmpeg takes no picture");
    require(avcodec_receive_packet(coder_->context.get(), coder_->packet.get()) == 0, "FFmpeg gives no file");
}

FfmpegDecoder::FfmpegDecoder(const std::vector<uint8_t>& file)
    : coder_(std::make_unique<FfmpegCoder>(avcodec_find_decoder(AV_CODEC_ID_MJPEG))), padded_(file)
{
    padded_.resize(file.size() + AV_INPUT_BUFFER_PADDING_SIZE);
    require(avcodec_open2(coder_->context.get(), nullptr, nullptr) == 0, "FFmpeg's decoder does not open");
    coder_->packet->data = padded_.data();
    coder_->packet->size = int(file.size());
}

FfmpegDecoder::~FfmpegDecoder() = default;

void FfmpegDecoder::decode()
{
    require(avcodec_send_packet(coder_->context.get(), coder_->packet.get()) == 0, "FFmpeg takes no file");
    require(avcodec_receive_frame(coder_->context.get(), coder_->frame.get()) == 0, "FFmpeg gives no picture");
}

bool FfmpegDecoder::equals(const codec::Picture& picture) const
{
    const AVFrame& frame = *coder_->frame;
    if (frame.width != picture.width() || frame.height != picture.height()) return false;
    for (int y = 0; y < picture.height(); ++y) {
        const uint8_t *theirs = frame.data[0] + ptrdiff_t(frame.linesize[0]) * y, *ours = picture.row(y);
        for (size_t i = 0; i < picture.step(); ++i) {
            // Blue comes first there.
            size_t from = frame.format == AV_PIX_FMT_BGR24 ? i / 3 * 3 + 2 - i % 3 : i;
            if (theirs[from] != ours[i]) return false;
        }
    }
    return true;
}

}
