// SPDX-License-Identifier: Apache-2.0
// Colour conversion and down-sampling by the library's row functions, so that rows stay in the first cache.
#include "codec/jpeg/encode/input.h"

#include <algorithm>
#include <cstring>

#include "codec/base/library.h"
#include "codec/jpeg/layout.h"

namespace qel::codec::jpeg {

namespace {

// Means of two rows, rounded down and up in turns as the library's horizontal filter does.
void averageRows(const uint8_t* upper, const uint8_t* lower, int width, uint8_t* out)
{
    for (int x = 0; x < width; ++x) out[x] = uint8_t((upper[x] + lower[x] + x % 2) >> 1);
}

template <int kChannels> void separate(const uint8_t* in, int width, uint8_t* const rows[])
{
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < kChannels; ++c) rows[c][x] = in[kChannels * x + c];
}

}

StripReader::StripReader(const Info& info, const Picture& picture)
    : picture_(picture), colour_(info.colour), maxV_(info.maxV())
{
    const Component& widest = *std::ranges::max_element(info.components, {}, &Component::h);
    paddedWidth_ = 8 * paddedBlocksAcross(info, widest);
    for (const Component& c : info.components) {
        bool wide = c.h == info.maxH(), tall = c.v == info.maxV();
        Filter filter = wide ? (tall ? Filter::none : Filter::boxH1V2) : tall ? Filter::boxH2V1 : Filter::boxH2V2;
        components_.push_back({filter, c.v, Plane(8 * paddedBlocksAcross(info, c), 8 * c.v), Plane(paddedWidth_, 2)});
    }
}

// Where the samples of row y of the strip, at full size, go.
uint8_t* StripReader::rowToFill(Strip& component, int y)
{
    return component.filter == Filter::none ? component.strip.row(y) : component.full.row(y);
}

void StripReader::load(int mcuRow)
{
    for (int y = 0; y < 8 * maxV_; ++y) {
        uint8_t* rows[4];
        for (size_t i = 0; i < components_.size(); ++i) rows[i] = rowToFill(components_[i], y);
        convert(std::min(8 * maxV_ * mcuRow + y, picture_.height() - 1), rows);
        int width = picture_.width();
        for (size_t i = 0; i < components_.size(); ++i) {
            memset(rows[i] + width, rows[i][width - 1], paddedWidth_ - width);
            sampleDown(components_[i], y);
        }
    }
}

void StripReader::convert(int y, uint8_t* const rows[]) const
{
    int channels = picture_.channels();
    for (int x = 0; x < picture_.width(); x += kConvertedAtOnce) {
        int width = std::min(kConvertedAtOnce, picture_.width() - x);
        const uint8_t* in = picture_.row(y) + channels * x;
        uint8_t* out[4];
        for (size_t i = 0; i < components_.size(); ++i) out[i] = rows[i] + x;
        switch (colour_) {
        case Colour::ycbcr:
            check(qeliRGBToYCbCr_JPEG_8u_C3P3R(in, 3 * width, out, width, {width, 1}));
            break;
        case Colour::ycck:
            check(qeliCMYKToYCCK_JPEG_8u_C4P4R(in, 4 * width, out, width, {width, 1}));
            break;
        case Colour::rgb:
            separate<3>(in, width, out);
            break;
        case Colour::cmyk:
            separate<4>(in, width, out);
            break;
        default:
            if (channels == 1)
                memcpy(out[0], in, width);
            else
                check(qeliRGBToY_JPEG_8u_C3C1R(in, 3 * width, out[0], width, {width, 1}));
        }
    }
}

// Row y, at full size, of the strip has been filled.
void StripReader::sampleDown(Strip& component, int y)
{
    if (component.filter == Filter::none) return;
    bool halfTall = component.filter != Filter::boxH2V1;
    if (halfTall && y % 2 == 0) return;
    const uint8_t* row = component.full.row(y);
    uint8_t* out = component.strip.row(halfTall ? y / 2 : y);
    if (!halfTall) return check(qeliSampleDownRowH2V1_Box_JPEG_8u_C1(row, paddedWidth_, out));
    const uint8_t* above = component.full.row(y - 1);
    if (component.filter == Filter::boxH1V2) return averageRows(above, row, paddedWidth_, out);
    check(qeliSampleDownRowH2V2_Box_JPEG_8u_C1(above, row, paddedWidth_, out));
}

}
