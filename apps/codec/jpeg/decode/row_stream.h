// SPDX-License-Identifier: Apache-2.0
// Rows of MCUs on their way to the picture: inverse DCT, up-sampling, colour.
#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "codec/jpeg/decode/inverse_transform.h"
#include "codec/jpeg/decode/output.h"
#include "codec/jpeg/fused.h"
#include "codec/jpeg/layout.h"

namespace qel::codec::jpeg {

// One row after the other goes through a strip that stays in the cache, or unit by unit straight into the picture.
class RowStream {
public:
    RowStream(const RowStream&) = delete;
    // Begins with this row of MCUs, whose first line takes the row above where interpolation needs that: row() has it
    // before, then.
    RowStream(const Info& info, const std::vector<QuantizerSteps>& steps, const ScanLayout& layout,
              const DecodeOptions& options, Picture& picture, int firstRow)
        : linesPerRow_(linesPerMcu(info, layout)), linesKept_(needsRowAbove(info, options)), rows_(layout.mcusDown),
          picture_(picture)
    {
        if (convertsMcus(info, options)) {
            mcus_.emplace(info, steps, layout, picture);
            return;
        }
        strips(info, layout);
        transform_.emplace(steps, layout, planes_);
        int firstLine = firstRow == 0 ? 0 : firstRow * linesPerRow_ - linesKept_;
        writer_.emplace(info, options.upsampling, planes_, picture, firstLine);
    }

    // Whether pictures of this kind go without planes: where that is faster, and chroma is not to be interpolated.
    static bool convertsMcus(const Info& info, const DecodeOptions& options)
    {
        return options.fast && options.upsampling == Upsampling::replicate && mcuConversionFor(info);
    }

    // Whether lines are interpolated between rows of MCUs.
    static bool needsRowAbove(const Info& info, const DecodeOptions& options)
    {
        auto isHalfTall = [&](const Component& c) { return 2 * c.v == info.maxV(); };
        return options.upsampling == Upsampling::triangle && std::ranges::any_of(info.components, isHalfTall);
    }

    // Lines of the picture in a row of MCUs.
    static int linesPerMcu(const Info& info, const ScanLayout& layout)
    {
        return layout.shares.size() == 1 ? 8 : 8 * info.maxV();
    }

    // `fill(sink)` hands over the blocks of the row, MCU by MCU: sink(i, column, block).
    template <class Fill> void row(int mcuRow, Fill fill)
    {
        if (mcus_)
            fillRow(*mcus_, mcuRow, fill);
        else
            fillRow(*transform_, mcuRow, fill);
    }

    // Writes what the rows up to this one allow: the last line may have to wait for its neighbour in the next.
    void write(int mcuRow)
    {
        bool isLast = mcuRow + 1 == rows_;
        if (mcus_)
            written_ = isLast ? picture_.height() : (mcuRow + 1) * linesPerRow_;
        else
            writer_->writeUntil(isLast ? picture_.height() : (mcuRow + 1) * linesPerRow_ - linesKept_);
    }
    void fillRest()
    {
        if (mcus_)
            fillGrey(picture_, written_);
        else
            writer_->fillRest();
    }

private:
    template <class Sink, class Fill> static void fillRow(Sink& sink, int mcuRow, Fill fill)
    {
        sink.startRow(mcuRow);
        fill(sink);
    }

    void strips(const Info& info, const ScanLayout& layout)
    {
        for (const Component& component : info.components) {
            int rowsPerMcu = layout.shares.size() == 1 ? 8 : 8 * component.v;
            // Another row of blocks holds what interpolation between rows of MCUs still needs.
            planes_.emplace_back(8 * paddedBlocksAcross(info, component), rowsPerMcu + 8);
        }
    }

    int linesPerRow_, linesKept_, rows_;
    Picture& picture_;
    std::optional<McuToPixels> mcus_;
    int written_ = 0;
    std::vector<Plane> planes_;
    std::optional<BlockTransform> transform_;
    std::optional<RowWriter> writer_;
};

}
