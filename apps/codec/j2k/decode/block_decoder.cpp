// SPDX-License-Identifier: Apache-2.0
// Decoding of code-blocks, each by itself.
#include "codec/j2k/decode/block_decoder.h"

#include <cmath>

#include "codec/base/library.h"
#include "codec/base/parallel.h"

namespace qel::codec::j2k {

namespace {

// Magnitude bits of a coefficient as the library has it, below the sign.
constexpr int kMagnitudeBits = 31;
constexpr int kMaxBlockSamples = 4096;

// COD and COC have these bits in other places than the library.
int libraryStyle(int style)
{
    constexpr std::pair<int, int> kBits[] = {
        {style::kBypass, JPEG2K_BYPASS},
        {style::kReset, JPEG2K_RESET_EVERY_PASS},
        {style::kTerminateEvery, JPEG2K_TERMINATE_EVERY_PASS},
        {style::kVerticallyCausal, JPEG2K_VERTICALLY_CAUSAL},
        {style::kPredictableTermination, JPEG2K_PREDICTABLE_TERMINATION},
        {style::kSegmentationSymbols, JPEG2K_SEGMENTATION_SYMBOLS},
    };
    // Bits below the last plane stay: they are half of what is not known.
    int mapped = JPEG2K_CONCEAL_ERRORS | JPEG2K_KEEP_LOW_BITS;
    for (auto [bit, libraryBit] : kBits)
        if (style & bit) mapped |= libraryBit;
    return mapped;
}

// Coefficients as the library decodes them are these times 2^fractionBits, which is negative where low planes had to be
// left out.
struct Scale {
    int fractionBits;
    int roiShift;
    double step; // of quantization
};

// Magnitudes of a region of interest are shifted up beyond all others (T.800 H.1).
bool isOfRegion(int32_t magnitude, const Scale& scale)
{
    int limit = scale.roiShift + scale.fractionBits;
    return limit < kMagnitudeBits && (limit <= 0 || magnitude >> limit);
}

int32_t signedOf(int32_t coded, int32_t magnitude)
{
    int32_t sign = coded >> 31;
    return (magnitude ^ sign) - sign;
}

void dequantize(const int32_t* coded, int count, const Scale& scale, int32_t* out)
{
    if (scale.fractionBits == 0 && scale.roiShift == 0) {
        for (int i = 0; i < count; ++i) out[i] = signedOf(coded[i], coded[i] & INT32_MAX);
        return;
    }
    for (int i = 0; i < count; ++i) {
        int32_t magnitude = coded[i] & INT32_MAX;
        int down = scale.fractionBits + (isOfRegion(magnitude, scale) ? scale.roiShift : 0);
        int64_t shifted = down < 0 ? int64_t(magnitude) << std::min(-down, 32) : magnitude >> std::min(down, 31);
        out[i] = signedOf(coded[i], int32_t(std::min<int64_t>(shifted, INT32_MAX)));
    }
}

void dequantize(const int32_t* coded, int count, const Scale& scale, float* out)
{
    float plain = float(std::ldexp(scale.step, -scale.fractionBits));
    if (scale.roiShift == 0) {
        for (int i = 0; i < count; ++i) out[i] = plain * float(signedOf(coded[i], coded[i] & INT32_MAX));
        return;
    }
    float ofRegion = float(std::ldexp(scale.step, -scale.fractionBits - scale.roiShift));
    for (int i = 0; i < count; ++i) {
        int32_t magnitude = coded[i] & INT32_MAX;
        out[i] = (isOfRegion(magnitude, scale) ? ofRegion : plain) * float(signedOf(coded[i], magnitude));
    }
}

// (E-3); what the low and high filters add to the range of samples is 0, 1 or 2 bits.
double stepOf(const Band& band, int precision)
{
    int gain = band.kind == BandKind::ll ? 0 : band.kind == BandKind::hh ? 2 : 1;
    return std::ldexp(1 + band.step.mantissa / 2048.0, precision + gain - band.step.exponent);
}

// All segments of a block in one piece.
class CodedBytes {
public:
    explicit CodedBytes(const CodeBlock& block)
    {
        for (const CodeSegment& segment : block.segments) lengths.push_back(segment.length);
        if (block.data.size() == 1) {
            start = block.data[0].data();
            return;
        }
        for (Bytes piece : block.data) joined_.insert(joined_.end(), piece.begin(), piece.end());
        joined_.push_back(0); // there is a place also without data
        start = joined_.data();
    }

    const uint8_t* start;
    std::vector<uint32_t> lengths;

private:
    std::vector<uint8_t> joined_;
};

struct PlacedBlock {
    const Band* band;
    const CodeBlock* block;
};

template <class T> class BlockDecoder {
public:
    static constexpr bool kIsReversible = std::is_same_v<T, int32_t>;

    BlockDecoder(const TileComponent& component, int precision, BlockFaults& faults)
        : component_(component), precision_(precision), style_(libraryStyle(component.coding.style)), faults_(faults)
    {}

    void decode(const PlacedBlock& placed, Plane<T>& plane) const
    {
        const CodeBlock& block = *placed.block;
        int planes = placed.band->bitPlanes - block.zeroBitPlanes;
        if (kIsReversible && planes - component_.roiShift > kMagnitudeBits) {
            ++faults_.tooDeep;
            return;
        }
        // A plane more than there are takes the half below the last one, where coefficients have fractions.
        int decoded = std::min(planes + !kIsReversible, kMagnitudeBits);
        int32_t coded[kMaxBlockSamples];
        decode(block, placed.band->kind, decoded, coded);
        Scale scale = {decoded - planes, component_.roiShift, stepOf(*placed.band, precision_)};
        for (uint32_t y = 0; y < block.height; ++y)
            dequantize(coded + y * block.width, block.width, scale, plane.row(block.y + y) + block.x);
    }

private:
    void decode(const CodeBlock& block, BandKind kind, int planes, int32_t* coded) const
    {
        QelSize size = {block.width, block.height};
        int bytes = 0;
        check(qeliDecodeGetBufSize_JPEG2K(size, &bytes));
        auto buffer = std::make_unique_for_overwrite<uint8_t[]>(size_t(bytes));
        CodedBytes segments(block);
        QelStatus status = qeliDecodeCodeBlock_JPEG2K_1u32s_C1R(
            segments.start, coded, int(sizeof(int32_t)) * size.width, size, int(kind), planes, int(block.passes()),
            segments.lengths.data(), int(segments.lengths.size()), style_, nullptr,
            reinterpret_cast<QelDecodeCBProgrState*>(buffer.get()));
        if (status == qelStsJPEG2KCodeBlockIsFinished)
            ++faults_.damaged;
        else
            check(status);
    }

    const TileComponent& component_;
    int precision_, style_;
    BlockFaults& faults_;
};

// Synthesis filters reach up to 4 samples far in each level, and half as far in the next one: 6 coefficients, and one
// for rounding.
constexpr int64_t kReach = 7;

bool isNeeded(const Band& band, const CodeBlock& block, int levelsBelow, const Rect& window)
{
    auto meets = [&](uint32_t from, uint32_t length, uint32_t first, uint32_t end) {
        return from < (int64_t(end) >> levelsBelow) + 1 + kReach &&
               int64_t(from) + length > (int64_t(first) >> levelsBelow) - kReach;
    };
    return meets(band.rect.x0 + block.x, block.width, window.x0, window.x1) &&
           meets(band.rect.y0 + block.y, block.height, window.y0, window.y1);
}

}

template <class T> Subbands<T> decodeBlocks(const TileComponent& component, int precision, int reduce,
                                            const Rect& window, int threads, BlockFaults& faults,
                                            const std::function<void(uint64_t)>& blockDone)
{
    int levels = component.coding.levels;
    reduce = std::min(reduce, levels);
    Subbands<T> bands(resolutionRect(component.rect, reduce), levels - reduce, Plane<T>::Fill::zero);
    std::vector<PlacedBlock> blocks;
    for (int r = 0; r <= levels - reduce; ++r)
        component.resolutions[size_t(r)].forCodedBlocks([&](const Band& band, const CodeBlock& block) {
            if (isNeeded(band, block, band.level - reduce, window)) blocks.push_back({&band, &block});
        });
    BlockDecoder<T> decoder(component, precision, faults);
    forEachInParallel(int(blocks.size()), threads, [&](int i) {
        const PlacedBlock& placed = blocks[size_t(i)];
        decoder.decode(placed, bands.band(placed.band->level - reduce, placed.band->kind));
        blockDone(uint64_t(placed.block->width) * placed.block->height);
    });
    return bands;
}

template Subbands<int32_t> decodeBlocks(const TileComponent&, int, int, const Rect&, int, BlockFaults&,
                                        const std::function<void(uint64_t)>&);
template Subbands<float> decodeBlocks(const TileComponent&, int, int, const Rect&, int, BlockFaults&,
                                      const std::function<void(uint64_t)>&);

}
