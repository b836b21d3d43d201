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

// Transforms and quantizes blocks of the strips.
class ForwardTransform {
public:
    ForwardTransform(const Info& info, const ScanLayout& layout, const std::array<QuantizerSteps, 2>& multipliers,
                     StripReader& strips)
        : strips_(strips)
    {
        for (const McuBlock& place : layout.blocks) {
            const ScanShare& share = layout.shares[place.slot];
            const Plane& strip = strips.strip(share.component);
            const QuantizerSteps& table = multipliers[info.components[share.component].quantizer];
            origins_.push_back({strip.row(8 * place.dy) + 8 * place.dx, strip.step(), 8 * share.across, table.data()});
        }
    }

    void startRow(int mcuRow) { strips_.load(mcuRow); }

    void block(int i, int mcuColumn, int16_t* values) const
    {
        const Origin& o = origins_[i];
        check(qeliDCTQuantFwd8x8LS_JPEG_8u16s_C1R(o.samples + mcuColumn * o.columnsPerMcu, o.step, values,
                                                  o.multipliers));
    }

    // Asked for in their order: all blocks of an MCU are made with its first, as transforms do not wait for the coder's
    // guesses then.
    const int16_t* operator()(int i, int mcuColumn)
    {
        if (i == 0)
            for (int j = 0; j < int(origins_.size()); ++j) block(j, mcuColumn, blocks_[j].data());
        return blocks_[i].data();
    }

private:
    struct Origin {
        const uint8_t* samples;
        int step, columnsPerMcu;
        const uint16_t* multipliers;
    };
    StripReader& strips_;
    std::vector<Origin> origins_;
    alignas(64) std::array<std::array<int16_t, 64>, 10> blocks_;
};

}
