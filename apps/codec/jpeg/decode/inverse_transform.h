// SPDX-License-Identifier: Apache-2.0
// Where decoded blocks go: through the inverse DCT into planes of samples.
#pragma once

#include <vector>

#include "codec/base/library.h"
#include "codec/base/plane.h"
#include "codec/jpeg/headers.h"
#include "codec/jpeg/layout.h"

namespace qel::codec::jpeg {

// Dequantizes and transforms blocks into the rows of planes, one plane for each component of the frame.
class BlockTransform {
public:
    // `steps[c]` are the quantization steps of component c; they must outlive this object.
    BlockTransform(const std::vector<QuantizerSteps>& steps, const ScanLayout& layout, std::vector<Plane>& planes)
    {
        for (const McuBlock& block : layout.blocks) {
            const ScanShare& share = layout.shares[block.slot];
            targets_.push_back({&planes[share.component], &steps[share.component], 8 * share.down, 8 * block.dy,
                                8 * share.across, 8 * block.dx, nullptr});
        }
    }

    void startRow(int mcuRow)
    {
        for (Target& t : targets_) t.at = t.plane->row(mcuRow * t.rowsPerMcu + t.rowOffset) + t.columnOffset;
    }

    void operator()(int i, int mcuColumn, const int16_t* block)
    {
        const Target& t = targets_[i];
        check(qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R(block, t.at + mcuColumn * t.columnsPerMcu, t.plane->step(),
                                                  t.steps->data()));
    }

private:
    struct Target {
        Plane* plane;
        const QuantizerSteps* steps;
        int rowsPerMcu, rowOffset, columnsPerMcu, columnOffset;
        uint8_t* at;
    };
    std::vector<Target> targets_;
};

}
