// SPDX-License-Identifier: Apache-2.0
// Whatever the sizes, steps and samples, functions of regions and rows stay within their buffers, and those that can be
// undone are.
#include <cstdlib>
#include <iterator>

#include "input.h"

namespace {

// Rows of `bytes` bytes each, some apart or none; a region's buffer ends with its last row.
struct Region {
    int step;
    Buffer buffer;

    Region(Input& in, int bytes, int rows)
        : step(bytes + (in.below(2) ? in.below(70) : 0)), buffer(size_t(step) * size_t(rows - 1) + size_t(bytes), in)
    {}
};

struct Planes {
    int step;
    Buffer buffers[4];
    uint8_t* of[4];

    Planes(Input& in, QelSize size) : Planes(in, size, size.width + (in.below(2) ? in.below(70) : 0)) {}

private:
    Planes(Input& in, QelSize size, int rowStep)
        : step(rowStep), buffers{plane(in, size, step), plane(in, size, step), plane(in, size, step),
                                 plane(in, size, step)}
    {
        for (int i = 0; i < 4; ++i) of[i] = buffers[i];
    }
    static Buffer plane(Input& in, QelSize size, int step)
    {
        return Buffer(size_t(step) * size_t(size.height - 1) + size_t(size.width), in);
    }
};

QelSize sizeOf(Input& in) { return {1 + in.below(3) * 90 + in.below(90), 1 + in.below(20)}; }

// kBytes: of a pixel where its channels are together.
template <int kBytes, class T> void join(QelStatus (*function)(const uint8_t* const*, int, T*, int, QelSize), Input& in)
{
    const QelSize size = sizeOf(in);
    Planes src(in, size);
    Region dst(in, kBytes * size.width, size.height);
    function(src.of, src.step, dst.buffer.as<T>(), dst.step, size);
}
template <int kBytes, class T>
void split(QelStatus (*function)(const T*, int, uint8_t* const*, int, QelSize), Input& in)
{
    const QelSize size = sizeOf(in);
    Region src(in, kBytes * size.width, size.height);
    Planes dst(in, size);
    function(src.buffer.as<T>(), src.step, dst.of, dst.step, size);
}
template <int kSrcBytes, int kDstBytes, class S, class D>
void convert(QelStatus (*function)(const S*, int, D*, int, QelSize), Input& in)
{
    const QelSize size = sizeOf(in);
    Region src(in, kSrcBytes * size.width, size.height), dst(in, kDstBytes * size.width, size.height);
    function(src.buffer.as<S>(), src.step, dst.buffer.as<D>(), dst.step, size);
}
// Down-sampling reads twice the destination's size; up-sampling half its width, and a sample on either side.
enum class Way { down, up };
void resample(QelStatus (*function)(const uint8_t*, int, QelSize, uint8_t*, int, QelSize), Way way, Input& in)
{
    const QelSize dstSize = sizeOf(in);
    QelSize srcSize = sizeOf(in);
    if (way == Way::down) srcSize = {2 * dstSize.width, 2 * dstSize.height};
    if (way == Way::up) srcSize.width = (dstSize.width + 1) / 2;
    Region src(in, srcSize.width + 2, srcSize.height), dst(in, dstSize.width, dstSize.height);
    function(src.buffer + 1, src.step, srcSize, dst.buffer, dst.step, dstSize);
}

using BufferSize = QelStatus (*)(const QelRect*, int*);
template <class T> using InPlace = QelStatus (*)(T*, int, const QelRect*, uint8_t*);
// Samples that have a bit to spare come back where the filter is reversible.
template <class T>
void wavelet(BufferSize bufferSize, InPlace<T> forward, InPlace<T> inverse, bool isReversible, Input& in)
{
    const QelSize size = sizeOf(in);
    const QelRect tile = {in.below(2), in.below(2), size.width, size.height};
    int bytes = 0;
    if (bufferSize(&tile, &bytes) != qelStsNoErr) return;
    Buffer work{size_t(bytes)};
    const int step = int(sizeof(T)) * size.width;
    std::vector<T> samples(size_t(size.width) * size_t(size.height));
    in.fill(samples.data(), samples.size() * sizeof(T));
    for (T& sample : samples) sample = T(sample >> 2);
    Buffer region(samples.size() * sizeof(T));
    memcpy(region, samples.data(), samples.size() * sizeof(T));
    forward(region.as<T>(), step, &tile, work);
    inverse(region.as<T>(), step, &tile, work);
    if (isReversible && memcmp(region, samples.data(), samples.size() * sizeof(T)) != 0) std::abort();
}

void (*const kCases[])(Input&) = {
    [](Input& in) { join<3>(qeliYCbCrToRGB_JPEG_8u_P3C3R, in); },
    [](Input& in) { join<3>(qeliYCbCrToBGR_JPEG_8u_P3C3R, in); },
    [](Input& in) { join<2>(qeliYCbCrToRGB565_JPEG_8u16u_P3C3R, in); },
    [](Input& in) { join<2>(qeliYCbCrToBGR555_JPEG_8u16u_P3C3R, in); },
    [](Input& in) { join<4>(qeliYCCKToCMYK_JPEG_8u_P4C4R, in); },
    [](Input& in) { join<1>(qeliRGBToY_JPEG_8u_P3C1R, in); },
    [](Input& in) { split<3>(qeliRGBToYCbCr_JPEG_8u_C3P3R, in); },
    [](Input& in) { split<3>(qeliBGRToYCbCr_JPEG_8u_C3P3R, in); },
    [](Input& in) { split<2>(qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R, in); },
    [](Input& in) { split<2>(qeliBGR565ToYCbCr_JPEG_16u8u_C3P3R, in); },
    [](Input& in) { split<4>(qeliCMYKToYCCK_JPEG_8u_C4P4R, in); },
    [](Input& in) { convert<3, 1>(qeliRGBToY_JPEG_8u_C3C1R, in); },
    [](Input& in) { convert<1, 2>(qeliSub128_JPEG_8u16s_C1R, in); },
    [](Input& in) { convert<2, 1>(qeliAdd128_JPEG_16s8u_C1R, in); },
    [](Input& in) { convert<1, 2>(qeliConvert_8u16u_C1R, in); },
    [](Input& in) { resample(qeliSampleDownH2V1_JPEG_8u_C1R, Way::down, in); },
    [](Input& in) { resample(qeliSampleDownH2V2_JPEG_8u_C1R, Way::down, in); },
    [](Input& in) { resample(qeliSampleUpH2V1_JPEG_8u_C1R, Way::up, in); },
    [](Input& in) { resample(qeliSampleUpH2V2_JPEG_8u_C1R, Way::up, in); },
    [](Input& in) {
        wavelet(qeliWTGetBufSize_B53_JPEG2K_16s_C1IR, qeliWTFwd_B53_JPEG2K_16s_C1IR, qeliWTInv_B53_JPEG2K_16s_C1IR,
                true, in);
    },
    [](Input& in) {
        wavelet(qeliWTGetBufSize_B53_JPEG2K_32s_C1IR, qeliWTFwd_B53_JPEG2K_32s_C1IR, qeliWTInv_B53_JPEG2K_32s_C1IR,
                true, in);
    },
    [](Input& in) {
        wavelet(qeliWTGetBufSize_D97_JPEG2K_16s_C1IR, qeliWTFwd_D97_JPEG2K_16s_C1IR, qeliWTInv_D97_JPEG2K_16s_C1IR,
                false, in);
    },
    [](Input& in) {
        wavelet(qeliWTGetBufSize_D97_JPEG2K_32s_C1IR, qeliWTFwd_D97_JPEG2K_32s_C1IR, qeliWTInv_D97_JPEG2K_32s_C1IR,
                false, in);
    },
};

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input in(data, size);
    kCases[in.below(int(std::size(kCases)))](in);
    return 0;
}
