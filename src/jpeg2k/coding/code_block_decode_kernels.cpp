// SPDX-License-Identifier: Apache-2.0
// The coding passes of code-block decoding (T.800 D.3).
#include "jpeg2k/coding/code_block_decode.h"

#include "jpeg2k/coding/code_block_contexts.h"
#include "jpeg2k/coding/mq_window.h"
#include "jpeg2k/coding/sample_groups.h"

namespace qel::QEL_BUILD {
namespace {

// Where the decisions of a pass come from.
struct MqSource {
    using Memory = MqMemory;
    MqWindow mq;
    const uint32_t *zeroCoding, *signCoding, *refinementCoding;

    QEL_INLINE MqSource(const DecodeCBProgrState& state, MqMemory* memory)
        : mq(state.mq, memory), zeroCoding(state.zeroCoding), signCoding(SignCodingLUT.of),
          refinementCoding(MagnRefineLUT.of)
    {}
    QEL_INLINE void giveBack(DecodeCBProgrState* state) const { mq.giveBack(&state->mq); }

    QEL_INLINE unsigned isSignificant(unsigned neighbours) { return mq.next(zeroCoding[neighbours]); }
    QEL_INLINE unsigned refinement(unsigned neighbours, unsigned sample)
    {
        return mq.next(refinementCoding[neighbours | (sample & kRefined) * (kRefinedBefore / kRefined)]);
    }

    QEL_INLINE unsigned isNegative(unsigned neighbours, unsigned sample)
    {
        uint32_t entry = signCoding[neighbours >> kSignNeighbourShift | (sample & kNegative) << kSignNegativeShift];
        return mq.next(entry & kSignContext) ^ entry >> 31;
    }
};

struct RawSource {
    struct Memory {
        explicit Memory(const MqDecoderState&) {}
    };
    RawReader raw;

    QEL_INLINE RawSource(const DecodeCBProgrState& state, Memory*) : raw(state.raw) {}
    QEL_INLINE void giveBack(DecodeCBProgrState* state) const { state->raw = raw; }

    QEL_INLINE unsigned next()
    {
        if (raw.bitIndex < 0) {
            raw.bitIndex = raw.lastByte == 0xFF ? 6 : 7;
            raw.lastByte = raw.position < raw.length ? raw.buffer[raw.position++] : 0xFF;
        }
        return raw.lastByte >> raw.bitIndex-- & 1;
    }
    QEL_INLINE unsigned isSignificant(unsigned) { return next(); }
    QEL_INLINE unsigned refinement(unsigned, unsigned) { return next(); }
    QEL_INLINE unsigned isNegative(unsigned, unsigned) { return next(); }
};

// A bit of magnitudes, and half of it for what lies below; bits above 30 have no place.
constexpr uint32_t bitOf(int plane) { return plane > 30 ? 0 : 1u << plane; }
constexpr uint32_t halfOf(int plane) { return plane > 31 ? 0 : 1u << plane >> 1; }

// By row, the neighbours of a sample that come later in the scan.
constexpr uint64_t kLaterNeighbours[kStripeHeight] = {0b110010, 0b111010, 0b111010, 0b011000};

// 16 columns of a stripe, or what is left of it. Samples are bits of masks.
struct Group {
    FlagStripe stripe;
    uint8_t* coefficients; // of the first sample
    ptrdiff_t rowStep;
    int count;      // columns
    uint64_t valid; // samples
    uint32_t significantValue;
    bool isWholeStripe;

    QEL_INLINE unsigned neighbours(unsigned sample) const { return ((const uint8_t*)stripe.neighbours)[sample]; }
    QEL_INLINE unsigned flags(unsigned sample) const { return ((const uint8_t*)stripe.samples)[sample]; }
    QEL_INLINE uint8_t* coefficient(unsigned sample) const
    {
        return coefficients + ptrdiff_t(sample & 3) * rowStep + (sample & ~3u);
    }

    template <unsigned kSet, unsigned kCleared = 0> QEL_INLINE void change(uint64_t samples) const
    {
        if (__builtin_expect(count == kGroupColumns, 1)) return changeFlags<kSet, kCleared>(stripe.samples, samples);
        FlagColumn changed[kGroupColumns] = {};
        __builtin_memcpy(changed, stripe.samples, size_t(count) * sizeof(FlagColumn));
        changeFlags<kSet, kCleared>(changed, samples);
        __builtin_memcpy(stripe.samples, changed, size_t(count) * sizeof(FlagColumn));
    }

    // The sample becomes significant: all that follows from it but its own flag.
    template <class Source> QEL_INLINE void becomeSignificant(Source& source, unsigned sample) const
    {
        stripe.setSignificant(sample >> 2, sample & 3);
        unsigned isNegative = source.isNegative(neighbours(sample), flags(sample));
        store(coefficient(sample), significantValue | isNegative << 31);
        stripe.setSign(sample >> 2, sample & 3, isNegative);
    }
};

// What the flags of a group say before it is visited.
struct GroupMasks {
    uint64_t significant, visited, near;

    static QEL_INLINE GroupMasks of(const FlagColumn* neighbours, const FlagColumn* samples, int count)
    {
        if (__builtin_expect(count >= kGroupColumns, 1)) return of(neighbours, samples);
        FlagColumn wholeNeighbours[kGroupColumns] = {}, wholeSamples[kGroupColumns] = {};
        __builtin_memcpy(wholeNeighbours, neighbours, size_t(count) * sizeof(FlagColumn));
        __builtin_memcpy(wholeSamples, samples, size_t(count) * sizeof(FlagColumn));
        return of(wholeNeighbours, wholeSamples);
    }

private:
    static QEL_INLINE GroupMasks of(const FlagColumn* neighbours, const FlagColumn* samples)
    {
        return {samplesWith<kSignificant>(samples), samplesWith<kVisited>(samples), samplesWithNeighbours(neighbours)};
    }
};

// The neighbours in the next group of significant samples.
QEL_INLINE uint64_t reachedAfter(uint64_t significant)
{
    uint64_t last = significant >> 60;
    return (last | last << 1 | last >> 1) & 15;
}

// visit(group, masks) in the order of the scan; it returns the samples that have become significant. The masks are
// taken before the group in front is visited: a load of many bytes waits long for stores of a few into them.
template <class Visit> QEL_INLINE void forGroups(DecodeCBProgrState* state, Visit visit)
{
    const bool isCausal = state->sequence.style & JPEG2K_VERTICALLY_CAUSAL;
    const auto pitch = ptrdiff_t(state->flagPitch);
    Group group;
    group.rowStep = state->dstStep;
    group.significantValue = bitOf(state->plane) | halfOf(state->plane);
    for (int y = 0; y < state->height; y += kStripeHeight) {
        int left = state->height - y;
        group.isWholeStripe = left >= kStripeHeight;
        uint64_t rows = group.isWholeStripe ? ~uint64_t(0) : ((1u << left) - 1) * kTopRow;
        group.stripe.setReach(y == 0 || isCausal ? 0 : -2 * pitch, left <= kStripeHeight ? 0 : 2 * pitch);
        group.stripe.neighbours = state->flags + y / kStripeHeight * 2 * pitch;
        group.stripe.samples = group.stripe.neighbours + pitch;
        group.coefficients = state->dst + y * group.rowStep;
        auto masks = GroupMasks::of(group.stripe.neighbours, group.stripe.samples, state->width);
        for (int x = 0; x < state->width; x += kGroupColumns) {
            int columnsLeft = state->width - x;
            group.count = columnsLeft < kGroupColumns ? columnsLeft : kGroupColumns;
            group.valid = rows & ~uint64_t(0) >> (64 - 4 * group.count);
            GroupMasks next = masks;
            if (columnsLeft > kGroupColumns)
                next = GroupMasks::of(group.stripe.neighbours + kGroupColumns, group.stripe.samples + kGroupColumns,
                                      columnsLeft - kGroupColumns);
            next.near |= reachedAfter(visit(group, masks));
            masks = next;
            group.stripe.neighbours += kGroupColumns;
            group.stripe.samples += kGroupColumns;
            group.coefficients += 4 * kGroupColumns;
        }
    }
}

template <class Source> QEL_INLINE void propagateSignificance(DecodeCBProgrState* state)
{
    typename Source::Memory memory(state->mq);
    Source source(*state, &memory);
    forGroups(state, [&](Group& group, GroupMasks masks) QEL_INLINE_BODY -> uint64_t {
        uint64_t open = group.valid & ~masks.significant, todo = open & masks.near;
        if (todo == 0) return 0;
        uint64_t visited = todo, significant = 0;
        do {
            unsigned sample = unsigned(__builtin_ctzll(todo));
            todo &= todo - 1;
            if (!source.isSignificant(group.neighbours(sample))) continue;
            group.becomeSignificant(source, sample);
            uint64_t joining = kLaterNeighbours[sample & 3] << sample & open;
            significant |= uint64_t(1) << sample;
            visited |= joining;
            todo |= joining;
        } while (todo != 0);
        group.change<kVisited>(visited);
        if (significant != 0) group.change<kSignificant>(significant);
        return significant;
    });
    source.giveBack(state);
}

template <class Source> QEL_INLINE void refineMagnitudes(DecodeCBProgrState* state)
{
    const uint32_t bit = bitOf(state->plane), half = halfOf(state->plane), kept = ~(bit ? 2 * bit - 1 : INT32_MAX);
    typename Source::Memory memory(state->mq);
    Source source(*state, &memory);
    forGroups(state, [&](Group& group, GroupMasks masks) QEL_INLINE_BODY -> uint64_t {
        uint64_t todo = group.valid & masks.significant & ~masks.visited, refined = todo;
        if (todo == 0) return 0;
        do {
            unsigned sample = unsigned(__builtin_ctzll(todo));
            todo &= todo - 1;
            uint8_t* coefficient = group.coefficient(sample);
            uint32_t isOne = source.refinement(group.neighbours(sample), group.flags(sample));
            store(coefficient, (load<uint32_t>(coefficient) & kept) | (-isOne & bit) | half);
        } while (todo != 0);
        group.change<kRefined>(refined);
        return 0;
    });
    source.giveBack(state);
}

void cleanup(DecodeCBProgrState* state)
{
    MqMemory memory(state->mq);
    MqSource source(*state, &memory);
    forGroups(state, [&](Group& group, GroupMasks masks) QEL_INLINE_BODY -> uint64_t {
        uint64_t visited = masks.visited, todo = group.valid & ~(visited | masks.significant), significant = 0;
        // Columns without a busy sample are coded as runs.
        uint64_t busy = masks.significant | visited | masks.near | (group.isWholeStripe ? ~group.valid : ~uint64_t(0));
        while (todo != 0) {
            unsigned sample = unsigned(__builtin_ctzll(todo));
            if ((sample & 3) == 0 && (busy >> sample & 15) == 0) {
                uint64_t ahead = busy >> sample;
                unsigned columns = (ahead == 0 ? 64 - sample : unsigned(__builtin_ctzll(ahead))) / 4;
                unsigned skipped = source.mq.skipZeros(kContextRunLength, columns);
                if (skipped > 0) {
                    sample += 4 * skipped;
                    if (sample == 64) break;
                    todo &= ~uint64_t(0) << sample;
                    if (skipped == columns) continue;
                }
                todo &= ~(uint64_t(15) << sample);
                if (!source.mq.next(kContextRunLength)) continue;
                unsigned row = source.mq.next(kContextUniform) << 1;
                row |= source.mq.next(kContextUniform);
                todo |= uint64_t(14 << row & 15) << sample;
                sample += row;
            } else {
                todo &= todo - 1;
                if (!source.isSignificant(group.neighbours(sample))) continue;
            }
            group.becomeSignificant(source, sample);
            significant |= uint64_t(1) << sample;
            busy |= (kLaterNeighbours[sample & 3] | 1) << sample;
        }
        if ((visited | significant) != 0) group.change<kSignificant, kVisited>(significant);
        return significant;
    });
    source.giveBack(state);
}

void significancePropagation(DecodeCBProgrState* state) { propagateSignificance<MqSource>(state); }
void magnitudeRefinement(DecodeCBProgrState* state) { refineMagnitudes<MqSource>(state); }
void significancePropagationRaw(DecodeCBProgrState* state) { propagateSignificance<RawSource>(state); }
void magnitudeRefinementRaw(DecodeCBProgrState* state) { refineMagnitudes<RawSource>(state); }

constexpr CodeBlockDecodeKernels kKernels = {
    .significancePropagation = significancePropagation,
    .magnitudeRefinement = magnitudeRefinement,
    .cleanup = cleanup,
    .significancePropagationRaw = significancePropagationRaw,
    .magnitudeRefinementRaw = magnitudeRefinementRaw,
};

}
}

const qel::CodeBlockDecodeKernels qel::CodeBlockDecodeKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
