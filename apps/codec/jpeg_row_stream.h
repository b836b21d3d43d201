// Rows of MCUs on their way to the picture: inverse DCT, up-sampling, colour.
#pragma once

#include <vector>

#include "codec/jpeg_layout.h"
#include "codec/jpeg_output.h"
#include "codec/jpeg_transform.h"

namespace qel::codec {

// One row after the other goes through a strip that stays in the cache.
class RowStream {
public:
    // Begins with a row of MCUs whose lines above `firstLine` are not to be written.
    RowStream(const JpegInfo& info, const std::vector<QuantizerSteps>& steps, const ScanLayout& layout,
              JpegUpsampling upsampling, Picture& picture, int firstLine)
        : linesPerRow_(linesPerMcu(info, layout)), rows_(layout.mcusDown), picture_(picture),
          planes_(strips(info, layout)), transform_(steps, layout, planes_),
          writer_(info, upsampling, planes_, picture, firstLine)
    {}

    // Lines of the picture in a row of MCUs.
    static int linesPerMcu(const JpegInfo& info, const ScanLayout& layout)
    {
        return layout.shares.size() == 1 ? 8 : 8 * info.maxV();
    }

    // `fill(transform)` hands the blocks of the row to the transform.
    template <class Fill> void row(int mcuRow, Fill fill)
    {
        transform_.startRow(mcuRow);
        fill(transform_);
    }

    // Writes what the rows up to this one allow: the last line may have to wait for its neighbour in the next.
    void write(int mcuRow)
    {
        writer_.writeUntil(mcuRow + 1 == rows_ ? picture_.height() : (mcuRow + 1) * linesPerRow_ - 1);
    }
    void fillRest() { writer_.fillRest(); }

private:
    static std::vector<Plane> strips(const JpegInfo& info, const ScanLayout& layout)
    {
        std::vector<Plane> planes;
        for (const JpegComponent& component : info.components) {
            int rowsPerMcu = layout.shares.size() == 1 ? 8 : 8 * component.v;
            // Another row of blocks holds what interpolation between rows of MCUs still needs.
            planes.emplace_back(8 * paddedBlocksAcross(info, component), rowsPerMcu + 8);
        }
        return planes;
    }

    int linesPerRow_, rows_;
    Picture& picture_;
    std::vector<Plane> planes_;
    BlockTransform transform_;
    RowWriter writer_;
};

}
