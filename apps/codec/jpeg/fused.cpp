// SPDX-License-Identifier: Apache-2.0
// Which conversions there are, and the MCUs at the right and lower edges.
#include "codec/jpeg/fused.h"

#include <algorithm>
#include <cstring>

namespace qel::codec::jpeg {

McuConversion mcuConversionFor(const Info& info)
{
    bool isYcbcr = info.colour == Colour::ycbcr, isYcck = info.colour == Colour::ycck;
    if (!isYcbcr && !isYcck) return {};
    const Component& luminance = info.components[0];
    for (size_t i = 1; i < info.components.size(); ++i) {
        const Component& c = info.components[i];
        bool likeLuminance = i == 3;
        if (c.h != (likeLuminance ? luminance.h : 1) || c.v != (likeLuminance ? luminance.v : 1)) return {};
    }
    switch (16 * luminance.h + luminance.v) {
    case 0x21:
        if (isYcbcr) return {qeliYCbCr422ToRGBLS_MCU_16s8u_P3C3R, qeliRGBToYCbCr422LS_MCU_8u16s_C3P3R};
        return {qeliYCCK422ToCMYKLS_MCU_16s8u_P4C4R, qeliCMYKToYCCK422LS_MCU_8u16s_C4P4R};
    case 0x22:
        if (isYcbcr) return {qeliYCbCr411ToRGBLS_MCU_16s8u_P3C3R, qeliRGBToYCbCr411LS_MCU_8u16s_C3P3R};
        return {qeliYCCK411ToCMYKLS_MCU_16s8u_P4C4R, qeliCMYKToYCCK411LS_MCU_8u16s_C4P4R};
    default:
        return {};
    }
}

McuToPixels::McuToPixels(const Info& info, const std::vector<QuantizerSteps>& steps, const ScanLayout& layout,
                         Picture& picture)
    : conversion_(mcuConversionFor(info)), picture_(picture), width_(8 * info.maxH()), height_(8 * info.maxV()),
      count_(int(layout.blocks.size()))
{
    for (int i = count_ - 1; i >= 0; --i) {
        const McuBlock& block = layout.blocks[i];
        steps_[i] = steps[layout.shares[block.slot].component].data();
        components_[block.slot] = blocks_[i].data();
    }
}

void McuToPixels::convert(int x)
{
    int channels = picture_.channels(), right = std::min(width_, picture_.width() - x),
        lines = std::min(height_, picture_.height() - line_);
    uint8_t* first = picture_.row(line_) + channels * x;
    int step = int(picture_.step());
    if (right == width_ && lines == height_) return check(conversion_.toPixels(components_.data(), first, step));
    check(conversion_.toPixels(components_.data(), tile_.pixels.data(), channels * width_));
    for (int y = 0; y < lines; ++y)
        memcpy(first + size_t(y) * step, tile_.pixels.data() + channels * width_ * y, size_t(channels) * right);
}

PixelsToMcu::PixelsToMcu(const Info& info, const ScanLayout& layout, const std::array<QuantizerSteps, 2>& steps,
                         const Picture& picture)
    : conversion_(mcuConversionFor(info)), picture_(picture), width_(8 * info.maxH()), height_(8 * info.maxV()),
      count_(int(layout.blocks.size()))
{
    for (size_t t : {0, 1}) check(qelsDivCRev_16u(steps[t].data(), 32768, tables_[t].data(), 64));
    for (int i = count_ - 1; i >= 0; --i) {
        const McuBlock& block = layout.blocks[i];
        multipliers_[i] = tables_[info.components[layout.shares[block.slot].component].quantizer].data();
        components_[block.slot] = blocks_[i].data();
    }
}

// Beyond the edges the last pixels are repeated.
void PixelsToMcu::convert(int x)
{
    int channels = picture_.channels(), right = std::min(width_, picture_.width() - x), step = channels * width_;
    if (right == width_ && line_ + height_ <= picture_.height()) {
        const uint8_t* first = picture_.row(line_) + channels * x;
        // These are more lines at once than processors fetch ahead by themselves.
        if (x + 3 * width_ <= picture_.width())
            for (int y = 0; y < height_; ++y) __builtin_prefetch(first + picture_.step() * y + 2 * step);
        return check(conversion_.fromPixels(first, int(picture_.step()), components_.data()));
    }
    for (int y = 0; y < height_; ++y) {
        const uint8_t* row = picture_.row(std::min(line_ + y, picture_.height() - 1)) + channels * x;
        uint8_t* out = tile_.pixels.data() + step * y;
        memcpy(out, row, size_t(channels) * right);
        for (int i = channels * right; i < step; ++i) out[i] = out[i - channels];
    }
    check(conversion_.fromPixels(tile_.pixels.data(), step, components_.data()));
}

}
