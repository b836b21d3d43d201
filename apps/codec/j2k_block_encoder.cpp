// Around the library's code-block encoder.
#include "codec/j2k_block_encoder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <type_traits>

#include "codec/j2k_code_segments.h"
#include "codec/j2k_rate_allocation.h"

namespace qel::codec {

namespace {

constexpr size_t kStoredAtOnce = 1 << 16;
// Bits of magnitudes; the highest one of a band is the highest one here.
constexpr int kMagnitudeBits = 31;

// Sign and magnitude of reversible coefficients, which are whole steps.
struct Exact {
    explicit Exact(const J2kBandCoding& band) : shift(kMagnitudeBits - band.bitPlanes) {}

    int32_t operator()(int32_t coefficient, float&) const
    {
        return int32_t(uint32_t(std::abs(coefficient)) << shift | (uint32_t(coefficient) & 0x80000000u));
    }

    int shift;
};

// Of others. Bits below whole steps are not coded, but sharpen the estimates of errors.
struct Quantized {
    explicit Quantized(const J2kBandCoding& band)
        : steps(float(1 / band.step)), unit(std::ldexp(1.f, kMagnitudeBits - band.bitPlanes))
    {}

    // Adds the squared error of the decoded value, in the middle of its step.
    int32_t operator()(float coefficient, float& error) const
    {
        constexpr float kLargest = 0x7FFFFF80;
        float magnitude = std::fabs(coefficient) * steps;
        auto whole = float(int32_t(magnitude));
        float off = magnitude - (whole > 0 ? whole + 0.5f : 0);
        error += off * off;
        auto bits = int32_t(std::min(magnitude * unit, kLargest));
        return coefficient < 0 ? bits | INT32_MIN : bits;
    }

    float steps, unit;
};

template <class Coefficient> using Quantizer = std::conditional_t<std::is_same_v<Coefficient, float>, Quantized, Exact>;

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
    Quantizer<Coefficient> quantizer(band);
    double error = 0;
    int32_t* samples = samples_.data();
    for (int y = 0; y < block.height; ++y, samples += block.width) {
        const Coefficient* src = coefficients.row(block.y + size_t(y)) + block.x;
        float rowError = 0;
        for (int x = 0; x < block.width; ++x) samples[x] = quantizer(src[x], rowError);
        error += double(rowError);
    }
    block.error = error;
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
    describeErrors(band, block);
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
    uint32_t segmentBegin = 0, leftOut = 0, end = 0;
    for (int pass = 0, segment = 0; pass < count; ++pass) {
        uint32_t rate = 0, length = 0;
        check(qeliEncodeGetTermPassLen_JPEG2K(state_.get(), segment, &length));
        check(qeliEncodeGetRate_JPEG2K(state_.get(), pass, &rate));
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
        block.passes[size_t(pass)].end = end;
    }
}

// From the last pass, which leaves the error of the quantizer, back: what a pass gains is known to a small part of that
// only, and the first ones gain much more than is left in the end.
void J2kBlockEncoder::describeErrors(const J2kBandCoding& band, J2kEncodedBlock& block)
{
    const double unit = band.sampleEnergy * band.step * band.step;
    double error = block.error * unit;
    for (int pass = int(block.passes.size()); pass-- > 0;) {
        int mantissa = 0, exponent = 0;
        block.passes[size_t(pass)].error = error;
        check(qeliEncodeGetDistReduction_JPEG2K(state_.get(), pass, &mantissa, &exponent));
        error += std::ldexp(mantissa, exponent) * unit;
    }
    block.error = error;
}

}
