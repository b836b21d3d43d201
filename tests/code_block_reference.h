// SPDX-License-Identifier: Apache-2.0
// Code-block decoding as T.800 Annexes C and D tell it: sample by sample, with contexts from counts of neighbours.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "jpeg2k/coding/mq_decoder.h"
#include "qeljx/jpeg2k_coding.h"

namespace qel::test {

struct RawBits {
    const uint8_t *next = nullptr, *end = nullptr;
    unsigned last = 0;
    int left = 0;

    int take()
    {
        if (left == 0) {
            left = last == 0xFF ? 7 : 8;
            last = next < end ? *next++ : 0xFF;
        }
        return last >> --left & 1;
    }
};

class CodeBlockReference {
public:
    CodeBlockReference(int width, int height, int bandType, bool isCausal)
        : width_(width), height_(height), bandType_(bandType), isCausal_(isCausal), samples(size_t(width) * height)
    {
        mqDecoderResetCtx(&mq);
    }

    MqDecoderState mq = {}; // the library's own steps: what all bytes mean, also those that no encoder writes
    RawBits raw;
    bool isRaw = false;             // where the decisions of the next pass come from
    std::vector<uint8_t> decisions; // each (context << 1) | decision

    // Planes above 30 have no place but in the sign.
    uint32_t coefficient(int x, int y) const
    {
        return uint32_t(at(x, y).isNegative) << 31 | uint32_t(at(x, y).magnitude & 0x7FFFFFFF);
    }

    void significancePropagation(int plane)
    {
        inScanOrder([&](int x, int y) {
            if (at(x, y).isSignificant || zeroContext(x, y) == 2) return;
            decodeZero(x, y, plane);
            at(x, y).isVisited = true;
        });
    }

    void magnitudeRefinement(int plane)
    {
        inScanOrder([&](int x, int y) {
            Sample& sample = at(x, y);
            if (!sample.isSignificant || sample.isVisited) return;
            int context = sample.isRefined ? 18 : zeroContext(x, y) == 2 ? 16 : 17;
            uint64_t bit = uint64_t(next(context)), unit = uint64_t(1) << plane;
            sample.magnitude = (sample.magnitude & -2 * unit) + bit * unit + unit / 2;
            sample.isRefined = true;
        });
    }

    void cleanup(int plane)
    {
        int skipped = 0;
        inScanOrder([&](int x, int y) {
            if (skipped > 0) return void(--skipped);
            if (y % 4 == 0 && y + 3 < height_ && isQuiet(x, y)) {
                if (!next(1)) return void(skipped = 3);
                skipped = next(0) * 2;
                skipped += next(0);
                decodeSign(x, y + skipped, plane);
                return;
            }
            if (!at(x, y).isSignificant && !at(x, y).isVisited) decodeZero(x, y, plane);
        });
        for (Sample& sample : samples) sample.isVisited = false;
    }

    bool segmentationSymbolIsWrong()
    {
        int symbol = 0;
        for (int i = 0; i < 4; ++i) symbol = symbol * 2 + next(0);
        return symbol != 0b1010;
    }

private:
    struct Sample {
        uint64_t magnitude = 0;
        bool isNegative = false, isSignificant = false, isVisited = false, isRefined = false;
    };

    Sample& at(int x, int y) { return samples[size_t(y) * width_ + x]; }
    const Sample& at(int x, int y) const { return samples[size_t(y) * width_ + x]; }
    int next(int context)
    {
        int decision = isRaw ? raw.take() : ownqj_DecoderDecode_asm(&mq, context, owniEstimator_JPEG2K);
        decisions.push_back(uint8_t(context << 1 | decision));
        return decision;
    }

    // The neighbour at (x + dx, y + dy): 0 if it is not significant, else its sign.
    int neighbour(int x, int y, int dx, int dy) const
    {
        if (isCausal_ && dy > 0 && y % 4 == 3) return 0;
        x += dx, y += dy;
        if (x < 0 || y < 0 || x >= width_ || y >= height_ || !at(x, y).isSignificant) return 0;
        return at(x, y).isNegative ? -1 : 1;
    }
    int count(int x, int y, int dx, int dy) const
    {
        return std::abs(neighbour(x, y, dx, dy)) + std::abs(neighbour(x, y, -dx, -dy));
    }

    // T.800 Table D.1, as the library numbers contexts.
    int zeroContext(int x, int y) const
    {
        int h = count(x, y, 1, 0), v = count(x, y, 0, 1), d = count(x, y, 1, 1) + count(x, y, 1, -1);
        if (bandType_ == 3) {
            int hv = std::min(h + v, 2);
            return 2 + (d >= 3 ? 8 : d == 2 ? (hv > 0 ? 7 : 6) : d == 1 ? 3 + hv : hv);
        }
        if (bandType_ == 2) std::swap(h, v);
        if (h == 2) return 2 + 8;
        if (h == 1) return 2 + (v >= 1 ? 7 : d >= 1 ? 6 : 5);
        return 2 + (v == 2 ? 4 : v == 1 ? 3 : std::min(d, 2));
    }

    void decodeZero(int x, int y, int plane)
    {
        if (next(zeroContext(x, y))) decodeSign(x, y, plane);
    }

    // T.800 Tables D.2 and D.3.
    void decodeSign(int x, int y, int plane)
    {
        auto sum = [&](int dx, int dy) {
            return std::clamp(neighbour(x, y, dx, dy) + neighbour(x, y, -dx, -dy), -1, 1);
        };
        static const int contexts[3][3] = {{15, 14, 13}, {12, 11, 12}, {13, 14, 15}}; // by h, v from -1 up
        int h = sum(1, 0), v = sum(0, 1), flip = h < 0 || (h == 0 && v < 0);
        at(x, y).isNegative = next(contexts[h + 1][v + 1]) ^ (isRaw ? 0 : flip);
        at(x, y).magnitude = (uint64_t(3) << plane) / 2;
        at(x, y).isSignificant = true;
    }

    // No sample of the column, nor any neighbour of one, is significant.
    bool isQuiet(int x, int y) const
    {
        for (int row = y; row < y + 4; ++row)
            if (at(x, row).isSignificant || at(x, row).isVisited || zeroContext(x, row) != 2) return false;
        return true;
    }

    template <class Visit> void inScanOrder(Visit visit)
    {
        for (int top = 0; top < height_; top += 4)
            for (int x = 0; x < width_; ++x)
                for (int y = top; y < std::min(top + 4, height_); ++y) visit(x, y);
    }

    int width_, height_, bandType_;
    bool isCausal_;
    std::vector<Sample> samples;
};

// A code-block as the library's call takes it.
struct CodedBlock {
    int width = 0, height = 0, bandType = 0, planes = 0, passes = 0, style = 0;
    std::vector<std::vector<uint8_t>> segments = {};
};
struct DecodedBlock {
    std::vector<uint32_t> coefficients;
    QelStatus status = qelStsNoErr;
    int errorPlane = -1;
    int decisions = 0;                             // of the MQ coder; raw bits do not count
    std::vector<std::vector<uint8_t>> passes = {}; // with raw ones, their decisions
};

// Pass i of a block: the first is a cleanup pass; three follow for every further plane.
enum class PassKind { significancePropagation, magnitudeRefinement, cleanup };
inline PassKind kindOf(int pass) { return PassKind((pass + 2) % 3); }
inline int segmentOf(int pass, int style)
{
    if (style & JPEG2K_TERMINATE_EVERY_PASS) return pass;
    if (!(style & JPEG2K_BYPASS) || pass < 10) return 0;
    return 1 + (pass - 10) / 3 * 2 + (kindOf(pass) == PassKind::cleanup);
}

inline DecodedBlock decodeReference(const CodedBlock& block)
{
    CodeBlockReference reference(block.width, block.height, block.bandType, block.style & JPEG2K_VERTICALLY_CAUSAL);
    DecodedBlock decoded = {};
    const bool terminatesAll = block.style & JPEG2K_TERMINATE_EVERY_PASS, bypasses = block.style & JPEG2K_BYPASS;
    int current = block.planes - 1, last = std::min(block.passes, 3 * block.planes - 2) - 1;
    for (int pass = 0; pass <= last && decoded.status == qelStsNoErr; ++pass) {
        int segment = segmentOf(pass, block.style);
        if (segment >= int(block.segments.size())) break;
        auto& bytes = block.segments[size_t(segment)];
        PassKind kind = kindOf(pass);
        bool isCleanup = kind == PassKind::cleanup, failed = false;
        int plane = current = block.planes - 1 - (pass + 2) / 3;
        reference.isRaw = bypasses && pass >= 10 && !isCleanup;
        if (pass == 0 || segmentOf(pass - 1, block.style) != segment) {
            mqDecoderInit(&reference.mq, bytes.data(), int(bytes.size()));
            reference.raw = {bytes.data(), bytes.data() + bytes.size()};
        }
        if (kind == PassKind::significancePropagation) reference.significancePropagation(plane);
        if (kind == PassKind::magnitudeRefinement) reference.magnitudeRefinement(plane);
        if (isCleanup) reference.cleanup(plane);
        if (isCleanup && block.style & JPEG2K_SEGMENTATION_SYMBOLS) failed = reference.segmentationSymbolIsWrong();
        decoded.decisions += reference.isRaw ? 0 : int(reference.decisions.size());
        decoded.passes.push_back(std::move(reference.decisions));
        reference.decisions.clear();
        // Only an MQ segment that can have ended is looked at.
        bool isLastPlane = plane == (bypasses ? std::max(block.planes - 4, 0) : 0), endsByStyle = bypasses && pass > 9;
        if (block.style & JPEG2K_PREDICTABLE_TERMINATION && !reference.isRaw &&
            (terminatesAll || (isCleanup && (isLastPlane || endsByStyle))))
            failed = mqDecoderCheckErrPredTerm(&reference.mq);
        if (!reference.isRaw && block.style & JPEG2K_RESET_EVERY_PASS) mqDecoderResetCtx(&reference.mq);
        if (failed) {
            decoded.status = qelStsJPEG2KCodeBlockIsFinished;
            decoded.errorPlane = plane;
        } else if (isCleanup && (terminatesAll || (bypasses && (pass == 9 || (pass > 9 && pass + 1 < block.passes))))) {
            current = plane - 1;
        }
    }
    for (int y = 0; y < block.height; ++y)
        for (int x = 0; x < block.width; ++x) {
            uint32_t value = reference.coefficient(x, y), kept = uint32_t(~uint64_t(0) << std::max(current, 0));
            if (decoded.errorPlane >= 0 && block.style & JPEG2K_CONCEAL_ERRORS)
                value = (value & kept & 0x7FFFFFFF) ? (value & kept) | 1u << current : 0;
            if (!(block.style & JPEG2K_KEEP_LOW_BITS)) value &= kept;
            decoded.coefficients.push_back(value);
        }
    return decoded;
}

}
