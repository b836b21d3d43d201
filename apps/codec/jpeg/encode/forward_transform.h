// SPDX-License-Identifier: Apache-2.0
// Blocks of a scan straight from strips of the picture, by the forward DCT.
#pragma once

#include <array>
#include <vector>

#include "codec/base/library.h"
#include "codec/jpeg/encode/input.h"
#include "codec/jpeg/headers.h"
#include "codec/jpeg/layout.h"

namespace qel::codec::jpeg {

// How coefficients become quantized ones.
struct Quantizer {
    Quantizer(const QuantizerSteps& steps, TableKind kind);

    bool isDoubled;             // whether samples are, before they are transformed
    QuantizerSteps multipliers; // of coefficients, in units of 2^-15
};

// Transforms and quantizes blocks of the strips.
class ForwardTransform {
public:
    ForwardTransform(const Info& info, const ScanLayout& layout, const std::array<QuantizerSteps, 2>& steps,
                     StripReader& strips)
        : strips_(strips), quantizers_{Quantizer(steps[kLuminance], kLuminance),
                                       Quantizer(steps[kChrominance], kChrominance)}
    {
        for (const McuBlock& place : layout.blocks) {
            const ScanShare& share = layout.shares[place.slot];
            const Plane& strip = strips.strip(share.component);
            const Quantizer& quantizer = quantizers_[info.components[share.component].quantizer];
            origins_.push_back({strip.row(8 * place.dy) + 8 * place.dx, strip.step(), 8 * share.across, &quantizer});
        }
    }
    ForwardTransform(const ForwardTransform&) = delete;

    void startRow(int mcuRow) { strips_.load(mcuRow); }

    // Asked for in their order: all blocks of an MCU are made with its first, as transforms do not wait for the coder's
    // guesses then.
    const int16_t* operator()(int i, int mcuColumn)
    {
        if (i == 0) transformMcu(mcuColumn, [&](int j) { return blocks_[j].data(); });
        return blocks_[i].data();
    }

    // The blocks of an MCU, to place(0), place(1) and so on.
    template <class Place> void transformMcu(int mcuColumn, Place place) const
    {
        // Doubled samples of all blocks are stored before the first of them is transformed: a load of several values
        // that have just been stored one after the other would wait.
        int count = int(origins_.size());
        for (int i = 0; i < count; ++i) begin(origins_[i], mcuColumn, place(i));
        for (int i = 0; i < count; ++i) finish(origins_[i], place(i));
    }

private:
    struct Origin {
        const uint8_t* samples;
        int step, columnsPerMcu;
        const Quantizer* quantizer;
    };

    static void begin(const Origin& o, int mcuColumn, int16_t* block)
    {
        const uint8_t* samples = o.samples + mcuColumn * o.columnsPerMcu;
        const uint16_t* multipliers = o.quantizer->multipliers.data();
        if (!o.quantizer->isDoubled)
            return check(qeliDCTQuantFwd8x8LS_JPEG_8u16s_C1R(samples, o.step, block, multipliers));
        for (int y = 0; y < 8; ++y, samples += o.step, block += 8)
            for (int x = 0; x < 8; ++x) block[x] = int16_t(2 * samples[x] - 256);
    }
    static void finish(const Origin& o, int16_t* block)
    {
        if (!o.quantizer->isDoubled) return;
        check(qeliDCTQuantFwd8x8_JPEG_16s_C1I(block, o.quantizer->multipliers.data()));
    }

    StripReader& strips_;
    std::array<Quantizer, 2> quantizers_;
    std::vector<Origin> origins_;
    alignas(64) std::array<std::array<int16_t, 64>, kMaxBlocksOfMcu> blocks_;
};

}
