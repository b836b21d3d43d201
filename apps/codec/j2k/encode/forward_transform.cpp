// SPDX-License-Identifier: Apache-2.0
// Rows of the picture become rows of planes, and these coefficients.
#include "codec/j2k/encode/forward_transform.h"

#include "codec/base/library.h"
#include "codec/base/parallel.h"

namespace qel::codec::j2k {

namespace {

template <class Sample> using Planes = std::vector<Plane<Sample>>;

// Few enough to stay in the first cache.
constexpr uint32_t kPixelsAtOnce = 1024;
constexpr uint32_t kRowsAtOnce = 16;

// Of interleaved samples; all are in one row, whose step does not matter.
void transformComponents(const int32_t* from, int32_t* const to[3], int pixels)
{
    check(qeliRCTFwd_JPEG2K_32s_C3P3R(from, 1, to, 1, {pixels, 1}));
}

void transformComponents(const float* from, float* const to[3], int pixels)
{
    check(qeliICTFwd_JPEG2K_32f_C3P3R(from, 1, to, 1, {pixels, 1}));
}

// Rows of a picture to rows of the planes.
template <class From, class Sample> class Splitter {
public:
    Splitter(const Picture& picture, uint32_t firstRow, const Rect& tile, bool transforms, Planes<Sample>& planes)
        : picture_(picture), firstRow_(firstRow), tile_(tile), transforms_(transforms), planes_(planes)
    {}

    void rows(uint32_t first, uint32_t end) const
    {
        for (uint32_t y = first; y < end; ++y)
            for (uint32_t x = 0; x < tile_.width(); x += kPixelsAtOnce)
                split(x, y, std::min(kPixelsAtOnce, tile_.width() - x));
    }

private:
    void split(uint32_t x, uint32_t y, uint32_t pixels) const
    {
        size_t channels = planes_.size();
        const From* from = picture_.row<From>(int(tile_.y0 + y - firstRow_)) + channels * (tile_.x0 + x);
        Sample shifted[4 * kPixelsAtOnce];
        // Samples become symmetric about 0; signed ones what they stand for, which is to be coded as it is.
        for (size_t i = 0; i < channels * pixels; ++i) shifted[i] = Sample(int(from[i]) - half_);
        Sample* to[4];
        for (size_t c = 0; c < channels; ++c) to[c] = planes_[c].row(y) + x;
        if (transforms_) {
            if (channels > 3) takeLast(shifted, pixels, to[3]);
            return transformComponents(shifted, to, int(pixels));
        }
        for (size_t c = 0; c < channels; ++c)
            for (size_t i = 0; i < pixels; ++i) to[c][i] = shifted[channels * i + c];
    }

    // Takes the fourth samples out of those of the pixels.
    static void takeLast(Sample* pixels, uint32_t count, Sample* last)
    {
        for (size_t i = 0; i < count; ++i) {
            last[i] = pixels[4 * i + 3];
            for (size_t c = 0; c < 3; ++c) pixels[3 * i + c] = pixels[4 * i + c];
        }
    }

    const Picture& picture_;
    const uint32_t firstRow_;
    const Rect tile_;
    const bool transforms_;
    Planes<Sample>& planes_;
    const int half_ = 1 << (picture_.precision() - 1);
};

template <class From, class Sample> void split(const Picture& picture, uint32_t firstRow, const Rect& tile,
                                               bool transforms, int threads, Planes<Sample>& planes)
{
    Splitter<From, Sample> splitter(picture, firstRow, tile, transforms, planes);
    forEachInParallel(int(ceilDivide(tile.height(), kRowsAtOnce)), threads, [&](int run) {
        uint32_t first = uint32_t(run) * kRowsAtOnce;
        splitter.rows(first, std::min(first + kRowsAtOnce, tile.height()));
    });
}

}

template <class Sample> std::vector<Subbands<Sample>> forwardTransform(const Picture& picture, uint32_t firstRow,
                                                                       const Rect& tile, bool transformsComponents,
                                                                       int levels, int threads)
{
    Planes<Sample> planes;
    for (int c = 0; c < picture.channels(); ++c)
        planes.emplace_back(tile.width(), tile.height(), Plane<Sample>::Fill::none);
    if (picture.bytesPerSample() == 1)
        split<uint8_t>(picture, firstRow, tile, transformsComponents, threads, planes);
    else
        split<uint16_t>(picture, firstRow, tile, transformsComponents, threads, planes);
    std::vector<Subbands<Sample>> components;
    for (Plane<Sample>& plane : planes) components.push_back(forwardWavelet(std::move(plane), tile, levels, threads));
    return components;
}

template std::vector<Subbands<int32_t>> forwardTransform(const Picture&, uint32_t, const Rect&, bool, int, int);
template std::vector<Subbands<float>> forwardTransform(const Picture&, uint32_t, const Rect&, bool, int, int);

}
