// SPDX-License-Identifier: Apache-2.0
// Blocks of whole MCUs straight to pixels, and pixels to blocks, without planes between them.
#pragma once

#include <algorithm>
#include <array>
#include <vector>

#include "codec/base/library.h"
#include "codec/base/picture.h"
#include "codec/jpeg/headers.h"
#include "codec/jpeg/layout.h"

namespace qel::codec::jpeg {

// One library call for each MCU of a sampling and colour.
struct McuConversion {
    QelStatus (*toPixels)(const int16_t* const blocks[], uint8_t* pixels, int step) = nullptr;
    QelStatus (*fromPixels)(const uint8_t* pixels, int step, int16_t* const blocks[]) = nullptr;

    explicit operator bool() const { return toPixels != nullptr; }
};

// For YCbCr and YCCK with 4:2:2 and 4:2:0. None for others; also for 4:4:4, which takes 2 to 15 % longer in this way
// than by planes, as there is no chroma to be saved.
McuConversion mcuConversionFor(const Info& info);

// The pixels of an MCU that lies partly outside the picture.
struct McuTile {
    alignas(64) std::array<uint8_t, 16 * 16 * 4> pixels;
};

// Blocks of a row of MCUs as the scan decoder gives them; each MCU becomes pixels when its last block has come. Chroma
// is replicated.
class McuToPixels {
public:
    McuToPixels(const Info& info, const std::vector<QuantizerSteps>& steps, const ScanLayout& layout, Picture& picture);

    void startRow(int mcuRow) { line_ = mcuRow * height_; }

    void operator()(int i, int mcuColumn, const int16_t* block)
    {
        check(qeliDCTQuantInv8x8_JPEG_16s_C1(block, blocks_[i].data(), steps_[i]));
        // Samples are kept within their 8 bits before colours are made of them, as T.81 has it.
        for (int16_t& sample : blocks_[i]) sample = std::clamp<int16_t>(sample, -128, 127);
        if (i + 1 == count_) convert(mcuColumn * width_);
    }

private:
    void convert(int x);

    McuConversion conversion_;
    Picture& picture_;
    int width_, height_; // of an MCU in pixels
    int count_;          // blocks of an MCU
    int line_ = 0;
    std::array<const uint16_t*, 10> steps_;
    std::array<const int16_t*, 4> components_; // first block of each
    alignas(64) std::array<std::array<int16_t, 64>, 10> blocks_;
    McuTile tile_;
};

// The other way, for the scan encoder: quantized blocks of a row of MCUs, which are asked for in their order.
class PixelsToMcu {
public:
    PixelsToMcu(const Info& info, const ScanLayout& layout, const std::array<QuantizerSteps, 2>& steps,
                const Picture& picture);
    PixelsToMcu(const PixelsToMcu&) = delete;

    void startRow(int mcuRow) { line_ = mcuRow * height_; }

    const int16_t* operator()(int i, int mcuColumn)
    {
        if (i == 0) transformMcu(mcuColumn, [&](int j) { return blocks_[j].data(); });
        return blocks_[i].data();
    }

    // The blocks of an MCU, to place(0), place(1) and so on. All one after the other: transforms do not wait for the
    // coder's guesses then.
    template <class Place> void transformMcu(int mcuColumn, Place place)
    {
        convert(mcuColumn * width_);
        for (int i = 0; i < count_; ++i)
            check(qeliDCTQuantFwd8x8_JPEG_16s_C1(blocks_[i].data(), place(i), multipliers_[i]));
    }

private:
    void convert(int x);

    McuConversion conversion_;
    const Picture& picture_;
    int width_, height_;
    int count_; // blocks of an MCU
    int line_ = 0;
    std::array<QuantizerSteps, 2> tables_;
    std::array<const uint16_t*, 10> multipliers_; // of the blocks
    std::array<int16_t*, 4> components_;
    alignas(64) std::array<std::array<int16_t, 64>, 10> blocks_;
    McuTile tile_;
};

}
