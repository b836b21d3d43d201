// SPDX-License-Identifier: Apache-2.0
// Around the library's code-block encoder.
#include "codec/j2k/encode/block_encoder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include "codec/j2k/code_segments.h"
#include "codec/j2k/encode/rate_allocation.h"

namespace qel::codec::j2k {

namespace {

constexpr size_t kStoredAtOnce = 1 << 16;
// Bits of magnitudes; the highest one of a band is the highest one here.
constexpr int kMagnitudeBits = 31;

// Sign and magnitude of a row of reversible coefficients, which are whole steps. They have no error.
void quantize(const int32_t* src, int width, const BandCoding& band, int32_t* dst, float*)
{
    int shift = kMagnitudeBits - band.bitPlanes;
    for (int x = 0; x < width; ++x)
        dst[x] = int32_t(uint32_t(std::abs(src[x])) << shift | (uint32_t(src[x]) & 0x80000000u));
}

// Of others. Bits below whole steps are not coded, but sharpen the estimates of errors. Adds the squared errors of
// decoded values, which lie in the middle of their steps, to those of each column.
void quantize(const float* src, int width, const BandCoding& band, int32_t* dst, float* errors)
{
    const auto steps = float(1 / band.step), unit = std::ldexp(1.f, kMagnitudeBits - band.bitPlanes);
    for (int x = 0; x < width; ++x) {
        float magnitude = std::fabs(src[x]) * steps;
        auto whole = int32_t(magnitude);
        float off = magnitude - float(whole) - 0.5f * float(std::min(whole, 1));
        errors[x] += off * off;
        uint32_t sign = std::bit_cast<uint32_t>(src[x]) & 0x80000000u;
        // No coefficient exceeds the bit planes of its band: the guard bits see to that.
        dst[x] = int32_t(uint32_t(int32_t(magnitude * unit)) | sign);
    }
}

int libraryStyle(const BandCoding& band)
{
    static constexpr std::pair<int, int> kStyles[] = {
        {style::kVerticallyCausal, JPEG2K_VERTICALLY_CAUSAL},       {style::kBypass, JPEG2K_BYPASS},
        {style::kTerminateEvery, JPEG2K_TERMINATE_EVERY_PASS},      {style::kReset, JPEG2K_RESET_EVERY_PASS},
        {style::kSegmentationSymbols, JPEG2K_SEGMENTATION_SYMBOLS},
    };
    int style = JPEG2K_LEAST_RATES | (band.isLossless ? JPEG2K_LOSSLESS : 0);
    for (auto [ours, theirs] : kStyles)
        if (band.style & ours) style |= theirs;
    return style;
}

}

BlockEncoder::BlockEncoder(int width, int height)
    : samples_(size_t(width) * size_t(height)), errors_(size_t(width)), bytes_(kStoredAtOnce)
{
    QelEncodeState* state = nullptr;
    if (qeliEncodeInitAlloc_JPEG2K(&state, width, height) == qelStsMemAllocErr) throw std::bad_alloc();
    state_.reset(state);
}

template <class Coefficient>
void BlockEncoder::encode(const Plane<Coefficient>& coefficients, const BandCoding& band, EncodedBlock& block)
{
    std::ranges::fill(errors_, 0.f);
    for (int y = 0; y < block.height; ++y)
        quantize(coefficients.row(block.y + size_t(y)) + block.x, block.width, band, samples_.data() + y * block.width,
                 errors_.data());
    block.error = std::accumulate(errors_.begin(), errors_.end(), 0.0);
    code(band, block);
}

template void BlockEncoder::encode(const Plane<int32_t>&, const BandCoding&, EncodedBlock&);
template void BlockEncoder::encode(const Plane<float>&, const BandCoding&, EncodedBlock&);

void BlockEncoder::code(const BandCoding& band, EncodedBlock& block)
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

void BlockEncoder::store(EncodedBlock& block)
{
    for (int isNotLast = 1; isNotLast;) {
        int stored = int(bytes_.size());
        check(qeliEncodeStoreBits_JPEG2K_1u(bytes_.data(), &stored, state_.get(), &isNotLast));
        block.data.insert(block.data.end(), bytes_.begin(), bytes_.begin() + stored);
    }
}

// A pass that ends a codeword segment needs all bytes of that, others as many as the library says. A 0xFF at the end of
// a segment is left out: a decoder supplies it.
void BlockEncoder::describePasses(const BandCoding& band, int count, EncodedBlock& block)
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
void BlockEncoder::describeErrors(const BandCoding& band, EncodedBlock& block)
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
