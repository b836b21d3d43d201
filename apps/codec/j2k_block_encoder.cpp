// Around the library's code-block encoder.
#include "codec/j2k_block_encoder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "codec/j2k_code_segments.h"
#include "codec/j2k_rate_allocation.h"

namespace qel::codec {

namespace {

constexpr size_t kStoredAtOnce = 1 << 16;
// Bits of magnitudes; the highest one of a band is the highest one here.
constexpr int kMagnitudeBits = 31;

// Magnitudes in units of the lowest coded plane, times 2^shift: reversible coefficients are in such units.
int32_t signMagnitude(int32_t coefficient, float, int shift)
{
    return int32_t(uint32_t(std::abs(coefficient)) << shift | (uint32_t(coefficient) & 0x80000000u));
}

// Bits below the lowest plane are not coded, but sharpen the estimates of errors.
int32_t signMagnitude(float coefficient, float scale, int)
{
    constexpr float kLargest = 0x7FFFFF80;
    int32_t magnitude = int32_t(std::min(std::fabs(coefficient) * scale, kLargest));
    return coefficient < 0 ? magnitude | INT32_MIN : magnitude;
}

int libraryStyle(const J2kBandCoding& band)
{
    static constexpr std::pair<int, int> kStyles[] = {
        {j2k_style::kVerticallyCausal, JPEG2K_VERTICALLY_CAUSAL},       {j2k_style::kBypass, JPEG2K_BYPASS},
        {j2k_style::kTerminateEvery, JPEG2K_TERMINATE_EVERY_PASS},      {j2k_style::kReset, JPEG2K_RESET_EVERY_PASS},
        {j2k_style::kSegmentationSymbols, JPEG2K_SEGMENTATION_SYMBOLS},
    };
    int style = band.isLossless ? JPEG2K_LOSSLESS : 0;
    for (auto [ours, theirs] : kStyles)
        if (band.style & ours) style |= theirs;
    return style;
}

}

J2kBlockEncoder::J2kBlockEncoder(int width, int height)
    : samples_(size_t(width) * size_t(height)), bytes_(kStoredAtOnce)
{
    QelEncodeState* state = nullptr;
    if (qeliEncodeInitAlloc_JPEG2K(&state, width, height) == qelStsMemAllocErr) throw std::bad_alloc();
    state_.reset(state);
}

template <class Coefficient> void J2kBlockEncoder::encode(const J2kPlane<Coefficient>& coefficients,
                                                          const J2kBandCoding& band, J2kEncodedBlock& block)
{
    int shift = kMagnitudeBits - band.bitPlanes;
    auto scale = float(std::ldexp(1 / band.step, shift));
    double energy = 0;
    int32_t* samples = samples_.data();
    for (int y = 0; y < block.height; ++y, samples += block.width) {
        const Coefficient* src = coefficients.row(block.y + size_t(y)) + block.x;
        for (int x = 0; x < block.width; ++x) {
            samples[x] = signMagnitude(src[x], scale, shift);
            energy += double(src[x]) * double(src[x]);
        }
    }
    block.error = energy * band.sampleEnergy;
    code(band, block);
}

template void J2kBlockEncoder::encode(const J2kPlane<int32_t>&, const J2kBandCoding&, J2kEncodedBlock&);
template void J2kBlockEncoder::encode(const J2kPlane<float>&, const J2kBandCoding&, J2kEncodedBlock&);

void J2kBlockEncoder::code(const J2kBandCoding& band, J2kEncodedBlock& block)
{
    int planes = 0, passes = 0, segments = 0;
    check(qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R(
        samples_.data(), block.width * int(sizeof(int32_t)), block.width, block.height, state_.get(), int(band.kind),
        band.bitPlanes, int(band.termination), 0, libraryStyle(band), &planes, &passes, &segments));
    block.zeroBitPlanes = std::min(band.bitPlanes, kMagnitudeBits - planes);
    store(block);
    describePasses(band, passes, block);
    findTruncations(block, band.style);
}

void J2kBlockEncoder::store(J2kEncodedBlock& block)
{
    for (int isNotLast = 1; isNotLast;) {
        int stored = int(bytes_.size());
        check(qeliEncodeStoreBits_JPEG2K_1u(bytes_.data(), &stored, state_.get(), &isNotLast));
        block.data.insert(block.data.end(), bytes_.begin(), bytes_.begin() + stored);
    }
}

// A pass that ends a codeword segment needs all bytes of that, others as many as the library says. A 0xFF at the end of
// a segment is left out: a decoder supplies it.
void J2kBlockEncoder::describePasses(const J2kBandCoding& band, int count, J2kEncodedBlock& block)
{
    block.passes.resize(size_t(count));
    const double unit = band.sampleEnergy * band.step * band.step;
    double error = block.error;
    uint32_t segmentBegin = 0, leftOut = 0, end = 0;
    for (int pass = 0, segment = 0; pass < count; ++pass) {
        uint32_t rate = 0, length = 0;
        int mantissa = 0, exponent = 0;
        check(qeliEncodeGetTermPassLen_JPEG2K(state_.get(), segment, &length));
        check(qeliEncodeGetRate_JPEG2K(state_.get(), pass, &rate));
        check(qeliEncodeGetDistReduction_JPEG2K(state_.get(), pass, &mantissa, &exponent));
        error -= std::ldexp(mantissa, exponent) * unit;
        uint32_t segmentEnd = segmentBegin + length;
        end = std::clamp(rate - leftOut, end, segmentEnd);
        if (pass + 1 == count || beginsSegment(band.style, pass + 1)) {
            if (length > 0 && block.data[segmentEnd - 1] == 0xFF) {
                block.data.erase(block.data.begin() + --segmentEnd);
                ++leftOut;
            }
            end = segmentBegin = segmentEnd;
            ++segment;
        }
        block.passes[size_t(pass)] = {end, error};
    }
}

}
