// The coding passes of code-block decoding (T.800 D.3).
#include "jpeg2k/code_block_decode.h"

#include "core/simd.h"
#include "jpeg2k/code_block_contexts.h"

namespace qel {
namespace QEL_BUILD {
namespace {

struct MqSource {
    MqDecoderState* mq;
    const uint32_t* zeroCoding;

    bool next(int context) { return ownqj_DecoderDecode_asm(mq, context, owniEstimator_JPEG2K); }
    bool isSignificant(unsigned flags) { return next(int(zeroCoding[flags & kNeighbours])); }
    bool isNegative(unsigned flags)
    {
        uint32_t entry = SignCodingLUT.of[flags >> kSignShift & kSignFlags];
        return next(int(entry & kSignContext)) ^ (entry >> 31);
    }
    bool refinement(unsigned flags) { return next(int(MagnRefineLUT.of[flags & kRefinementFlags])); }
};

struct RawSource {
    RawReader* raw;

    bool next()
    {
        if (raw->bitIndex < 0) {
            raw->bitIndex = raw->lastByte == 0xFF ? 6 : 7;
            raw->lastByte = raw->position < raw->length ? raw->buffer[raw->position++] : 0xFF;
        }
        return raw->lastByte >> raw->bitIndex-- & 1;
    }
    bool isSignificant(unsigned) { return next(); }
    bool isNegative(unsigned) { return next(); }
    bool refinement(unsigned) { return next(); }
};

// The value of a sample that becomes significant in a plane, and the bits that a refinement writes.
QEL_INLINE uint32_t bitAndHalf(int plane) { return plane > 31 ? 0 : uint32_t(uint64_t(3) << plane >> 1) & INT32_MAX; }

template <class Source> struct Pass {
    Source source;
    DecodeCBProgrState* state;
    FlagStripe stripe;
    uint8_t* rows;

    uint8_t* coefficient(int column, int row) const
    {
        return rows + (ptrdiff_t)row * state->dstStep + (ptrdiff_t)column * 4;
    }
    void becomeSignificant(int column, int row)
    {
        bool isNegative = source.isNegative(stripe.columns[column][row]);
        store(coefficient(column, row), bitAndHalf(state->plane) | uint32_t(isNegative) << 31);
        stripe.setSignificant(column, row, isNegative);
    }

    // visit(column, rows of the stripe), in the order of the scan.
    template <class Visit> void forColumns(Visit visit)
    {
        bool isCausal = state->style & JPEG2K_VERTICALLY_CAUSAL;
        for (int y = 0; y < state->height; y += kStripeHeight) {
            int left = state->height - y, count = left < kStripeHeight ? left : kStripeHeight;
            FlagColumn* columns = state->flags + size_t(y / kStripeHeight) * state->flagPitch;
            stripe.columns = columns;
            stripe.above = y == 0 || isCausal ? nullptr : columns - state->flagPitch;
            stripe.below = left <= kStripeHeight ? nullptr : columns + state->flagPitch;
            rows = state->dst + (ptrdiff_t)y * state->dstStep;
            for (int x = 0; x < state->width; ++x) visit(x, count);
        }
    }

    void significancePropagation()
    {
        forColumns([&](int x, int count) {
            for (int row = 0; row < count; ++row) {
                uint16_t& flags = stripe.columns[x][row];
                if (flags & kSignificant || !(flags & kHasContext)) continue;
                if (source.isSignificant(flags)) becomeSignificant(x, row);
                flags |= kVisited;
            }
        });
    }

    void magnitudeRefinement()
    {
        int plane = state->plane;
        uint32_t kept = plane > 30 ? 0 : ~0u << (plane + 1), bit = plane > 30 ? 0 : 1u << plane, half = bit >> 1;
        forColumns([&](int x, int count) {
            for (int row = 0; row < count; ++row) {
                uint16_t& flags = stripe.columns[x][row];
                if (!(flags & kSignificant) || flags & kVisited) continue;
                bool isOne = source.refinement(flags);
                uint8_t* at = coefficient(x, row);
                store(at, (load<uint32_t>(at) & kept) | (isOne ? bit : 0) | half);
                flags |= kRefined;
            }
        });
    }

    void cleanup()
    {
        forColumns([&](int x, int count) {
            int row = 0;
            if (count == kStripeHeight && load<uint64_t>(stripe.columns[x]) == 0) {
                if (!source.next(kContextRunLength)) return;
                row = source.next(kContextUniform) << 1;
                row |= int(source.next(kContextUniform));
                becomeSignificant(x, row++);
            }
            for (; row < count; ++row) {
                unsigned flags = stripe.columns[x][row];
                if (flags & (kSignificant | kVisited)) continue;
                if (source.isSignificant(flags)) becomeSignificant(x, row);
            }
            for (uint16_t& flags : stripe.columns[x]) flags &= uint16_t(~kVisited);
        });
    }
};

Pass<MqSource> mqPass(DecodeCBProgrState* state) { return {{&state->mq, state->zeroCoding}, state, {}, nullptr}; }
Pass<RawSource> rawPass(DecodeCBProgrState* state) { return {{&state->raw}, state, {}, nullptr}; }

void significancePropagation(DecodeCBProgrState* state) { mqPass(state).significancePropagation(); }
void magnitudeRefinement(DecodeCBProgrState* state) { mqPass(state).magnitudeRefinement(); }
void cleanup(DecodeCBProgrState* state) { mqPass(state).cleanup(); }
void significancePropagationRaw(DecodeCBProgrState* state) { rawPass(state).significancePropagation(); }
void magnitudeRefinementRaw(DecodeCBProgrState* state) { rawPass(state).magnitudeRefinement(); }

}
}

const CodeBlockDecodeKernels CodeBlockDecodeKernels::QEL_BUILD = {
    qel::QEL_BUILD::significancePropagation, qel::QEL_BUILD::magnitudeRefinement, qel::QEL_BUILD::cleanup,
    qel::QEL_BUILD::significancePropagationRaw, qel::QEL_BUILD::magnitudeRefinementRaw};

}
