// Where the blocks of a scan go: through the inverse DCT into planes of samples, or as they are into a store.
#pragma once

#include <vector>

#include "codec/jpeg_headers.h"
#include "codec/jpeg_layout.h"
#include "codec/jpeg_reader.h"
#include "codec/library.h"
#include "codec/plane.h"

namespace qel::codec {

// Dequantizes and transforms blocks into the rows of planes, one plane for each component of the frame.
class BlockTransform {
public:
    BlockTransform(const JpegHeaders& headers, const ScanLayout& layout, std::vector<Plane>& planes)
    {
        for (const McuBlock& block : layout.blocks) {
            const ScanShare& share = layout.shares[block.slot];
            const JpegComponent& component = headers.info().components[share.component];
            targets_.push_back({&planes[share.component], &headers.quantizer(component), 8 * share.down, 8 * block.dy,
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

// Keeps the quantized coefficients of the blocks that the components themselves need.
class CoefficientStore {
public:
    CoefficientStore(const ScanLayout& layout, std::vector<JpegCoefficients>& components)
        : layout_(layout), components_(components)
    {}

    void startRow(int mcuRow) { mcuRow_ = mcuRow; }

    void operator()(int i, int mcuColumn, const int16_t* block)
    {
        const McuBlock& place = layout_.blocks[i];
        const ScanShare& share = layout_.shares[place.slot];
        JpegCoefficients& component = components_[share.component];
        int row = mcuRow_ * share.down + place.dy, column = mcuColumn * share.across + place.dx;
        if (row >= component.blocksDown || column >= component.blocksAcross) return;
        size_t index = size_t(row) * component.blocksAcross + column;
        check(qeliCopy_16s_C1R(block, 128, component.values.data() + 64 * index, 128, {64, 1}));
    }

private:
    const ScanLayout& layout_;
    std::vector<JpegCoefficients>& components_;
    int mcuRow_ = 0;
};

}
