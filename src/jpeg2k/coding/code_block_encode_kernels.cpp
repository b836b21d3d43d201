// SPDX-License-Identifier: Apache-2.0
// Kernels of code-block encoding.
#include "jpeg2k/coding/code_block_encode.h"

#include "core/big_endian.h"
#include "core/select.h"
#include "jpeg2k/coding/distortion_tables.h"
#include "jpeg2k/coding/mq_states.h"
#include "jpeg2k/coding/recorded_bytes.h"

namespace qel::QEL_BUILD {
namespace {

constexpr int kColumns = 16, kRows = 4;

// Other bands have the contexts of LL.
constexpr int kBandHL = 2, kBandHH = 3;

QEL_INLINE uint64_t firstBits(int count) { return count >= 64 ? ~uint64_t(0) : (uint64_t(1) << count) - 1; }

// body(word's index, the samples of the word that belong to the block) in the order of the scan.
template <class Body> QEL_INLINE void eachWord(const BlockMaps& maps, Body body)
{
    int lastColumns = maps.width - (maps.words - 1) * kColumns, lastRows = maps.height - (maps.stripes - 1) * kRows;
    for (int s = 0; s < maps.stripes; ++s) {
        uint64_t rows = kTopRow * ((1u << (s + 1 < maps.stripes ? kRows : lastRows)) - 1);
        for (int w = 0; w < maps.words; ++w)
            body(s * maps.stride() + w, rows & firstBits(w + 1 < maps.words ? 64 : kRows * lastColumns));
    }
}

// Sums table entries by the six bits of the magnitude below a plane.
class Reduction {
public:
    Reduction(const BlockMaps& maps, const PassMode& mode) : maps_(maps), mode_(mode) {}

    QEL_INLINE void add(uint64_t set, ptrdiff_t word, const int32_t* table)
    {
        if (set == 0) return;
        uint64_t lower[6] = {}, all = 0;
        for (int k = 0; k < 6 && k < mode_.plane; ++k) all |= lower[k] = maps_.map(mode_.plane - 1 - k)[word] & set;
        if (mode_.isExact && all != 0)
            return eachSample(set, [&](int i) {
                uint32_t index = 0;
                for (int k = 0; k < 6; ++k) index = index << 1 | uint32_t(lower[k] >> i & 1);
                sum += table[index];
            });
        // These tables are linear.
        int64_t index = 0;
        for (int k = 0; k < 6; ++k) index = 2 * index + __builtin_popcountll(lower[k]);
        sum += int64_t(table[0]) * __builtin_popcountll(set) + (table[1] - table[0]) * index;
    }

    int64_t sum = 0;

private:
    const BlockMaps& maps_;
    const PassMode& mode_;
};

QEL_INLINE const int32_t* significanceTable(const PassMode& mode)
{
    return mode.isExact ? FsLossless_LUT.entries : FsLossy_LUT.entries;
}
QEL_INLINE const int32_t* refinementTable(const PassMode& mode)
{
    return mode.isExact ? FmLossless_LUT.entries : FmLossy_LUT.entries;
}

QEL_INLINE uint64_t seenBelow(const PassMode& mode) { return mode.isCausal ? 0 : ~uint64_t(0); }

template <Coding kCoding> PassRecord significancePass(const BlockMaps& maps, const PassMode& mode, uint8_t* out)
{
    uint64_t *significant = maps.map(BlockMaps::kSignificant), *visited = maps.map(BlockMaps::kVisited);
    const uint64_t *signs = maps.map(BlockMaps::kSigns), *planes = maps.map(mode.plane);
    Reduction reduction(maps, mode);
    eachWord(maps, [&](ptrdiff_t w, uint64_t samples) {
        auto around = Surroundings::of(significant + w, maps.stride(), seenBelow(mode));
        visited[w] = 0;
        if (around.isEmpty()) return;
        uint64_t insignificant = samples & ~around.here, plane = planes[w], added = 0;
        uint64_t members = around.neighbours(around.here).any() & insignificant;
        // Those that become significant bring in later neighbours: below, and in the column to the right.
        for (uint64_t known = 0; members != known;) {
            known = members;
            added = members & plane;
            uint64_t below = upper(0, added);
            members |= (below | fromLeft(0, added | below | lower(added, 0))) & insignificant;
        }
        visited[w] = members;
        if (members == 0) return;
        significant[w] |= added;
        auto neighbours = around.neighbours(significant[w]);
        SampleBytes bytes;
        if constexpr (kCoding == Coding::raw)
            bytes.zero.fill<1>({{plane}});
        else
            bytes.zero.fill<5>(zeroCoding<kCoding>(neighbours, plane));
        if (added != 0)
            bytes.fillSigns<kCoding>(neighbours, Surroundings::of(signs + w, maps.stride(), seenBelow(mode)));
        out = bytes.put(members, added, out);
        reduction.add(added, w, significanceTable(mode));
    });
    return {out, reduction.sum};
}

template <bool kRaw> PassRecord refinementPass(const BlockMaps& maps, const PassMode& mode, uint8_t* out)
{
    const uint64_t *significant = maps.map(BlockMaps::kSignificant), *visited = maps.map(BlockMaps::kVisited);
    const uint64_t* planes = maps.map(mode.plane);
    uint64_t* refined = maps.map(BlockMaps::kRefined);
    Reduction reduction(maps, mode);
    eachWord(maps, [&](ptrdiff_t w, uint64_t) {
        uint64_t members = significant[w] & ~visited[w], plane = planes[w];
        if (members == 0) return;
        Bytes64 bytes;
        if constexpr (kRaw) {
            bytes.fill<1>({{plane}});
        } else {
            auto around = Surroundings::of(significant + w, maps.stride(), seenBelow(mode));
            bytes.fill<3>(refinementCoding(around.neighbours(around.here).any(), refined[w], plane),
                          kContextRefinement << 1);
        }
        out = bytes.put(members, out);
        refined[w] |= members;
        reduction.add(members & ~plane, w, refinementTable(mode));
        reduction.add(members & plane, w, refinementTable(mode) + 64);
    });
    return {out, reduction.sum};
}

// The samples of each column that follow its first one in the set.
QEL_INLINE uint64_t behindFirst(uint64_t set)
{
    set |= set << 1 & ~kTopRow;
    set |= set << 2 & ~(kTopRow | kTopRow << 1);
    return set << 1 & ~kTopRow;
}

template <Coding kCoding> PassRecord cleanupPass(const BlockMaps& maps, const PassMode& mode, uint8_t* out)
{
    uint64_t* significant = maps.map(BlockMaps::kSignificant);
    const uint64_t *signs = maps.map(BlockMaps::kSigns), *visited = maps.map(BlockMaps::kVisited);
    const uint64_t* planes = maps.map(mode.plane);
    Reduction reduction(maps, mode);
    eachWord(maps, [&](ptrdiff_t w, uint64_t samples) {
        auto around = Surroundings::of(significant + w, maps.stride(), seenBelow(mode));
        uint64_t members = samples & ~around.here & ~visited[w], added = members & planes[w];
        if (members == 0) return;
        if (added == 0 && around.isEmpty() && samples == ~uint64_t(0)) {
            // Nothing but runs, in all columns.
            store(out, U8<16>{} + uint8_t(kContextRunLength << 1));
            out += kColumns;
            return;
        }
        significant[w] |= added;
        auto neighbours = around.neighbours(significant[w]);
        auto before = around.neighbours(around.here);
        // Runs: whole columns of four without a neighbour when the scan comes to them.
        uint64_t busy =
            neighbours.left | neighbours.upLeft | neighbours.downLeft | before.any() | around.here | ~samples;
        uint64_t runs = ~wholeColumns(busy), ends = added & runs;
        ends &= ~behindFirst(ends);
        members &= ~runs | kTopRow | behindFirst(ends);
        auto decisions = zeroCoding<kCoding>(neighbours, planes[w]);
        decisions.replace(runs & kTopRow, wholeColumns(ends), kContextRunLength);
        SampleBytes bytes;
        bytes.zero.fill<5>(decisions);
        if (added != 0)
            bytes.fillSigns<kCoding>(neighbours, Surroundings::of(signs + w, maps.stride(), seenBelow(mode)));
        out = bytes.putRuns(members, added, ends, out);
        reduction.add(added, w, significanceTable(mode));
    });
    return {out, reduction.sum};
}

PassRecord significance(const BlockMaps& maps, const PassMode& mode, uint8_t* out)
{
    if (mode.isRaw) return significancePass<Coding::raw>(maps, mode, out);
    if (mode.bandType == kBandHL) return significancePass<Coding::hl>(maps, mode, out);
    if (mode.bandType == kBandHH) return significancePass<Coding::hh>(maps, mode, out);
    return significancePass<Coding::ll>(maps, mode, out);
}

PassRecord refinement(const BlockMaps& maps, const PassMode& mode, uint8_t* out)
{
    return mode.isRaw ? refinementPass<true>(maps, mode, out) : refinementPass<false>(maps, mode, out);
}

PassRecord cleanup(const BlockMaps& maps, const PassMode& mode, uint8_t* out)
{
    if (mode.bandType == kBandHL) return cleanupPass<Coding::hl>(maps, mode, out);
    if (mode.bandType == kBandHH) return cleanupPass<Coding::hh>(maps, mode, out);
    return cleanupPass<Coding::ll>(maps, mode, out);
}

// The bytes of a word's coefficients, the highest first, each in the order of the scan; and the union of the
// coefficients.
struct WordBytes {
    alignas(64) uint8_t of[4][64];
    U8<16> all;

    // Four columns of four rows, row by row: those of `first` on.
    QEL_INLINE void gather(const U8<16> (&rows)[4], int first)
    {
        auto byBytes = [&](int r) { return inBlocks<0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15>(rows[r]); };
        U8<16> r0 = byBytes(0), r1 = byBytes(1), r2 = byBytes(2), r3 = byBytes(3);
        using Op = Simd<16>;
        U8<16> even = Op::zipLow(r0, r2), odd = Op::zipLow(r1, r3);
        store(byte(0) + 4 * first, Op::zipLow(even, odd));
        store(byte(1) + 4 * first, Op::zipHigh(even, odd));
        even = Op::zipHigh(r0, r2);
        odd = Op::zipHigh(r1, r3);
        store(byte(2) + 4 * first, Op::zipLow(even, odd));
        store(byte(3) + 4 * first, Op::zipHigh(even, odd));
        all |= rows[0] | rows[1] | rows[2] | rows[3];
    }
    QEL_INLINE uint32_t unionOfAll() const
    {
        auto values = (U32<16>)all;
        return values[0] | values[1] | values[2] | values[3];
    }

private:
    QEL_INLINE uint8_t* byte(int inMemory) { return of[kLittleEndian ? 3 - inMemory : inMemory]; }
};

QEL_INLINE void fill(WordBytes& bytes, const uint8_t* src, int srcStep, int columns, int rows)
{
    bytes.all = U8<16>{};
    for (int c = 0; c < kColumns; c += 4) {
        U8<16> four[4] = {};
        for (int r = 0; r < rows; ++r) {
            const uint8_t* from = src + ptrdiff_t(r) * srcStep + 4 * c;
            if (columns - c >= 4)
                four[r] = load<U8<16>>(from);
            else if (columns > c)
                __builtin_memcpy(&four[r], from, size_t(4 * (columns - c)));
        }
        bytes.gather(four, c);
    }
}

// The eight sets that bytes of the samples make, the highest bit's first, `step` words apart.
QEL_INLINE void spread(const uint8_t* bytes, uint64_t* sets, ptrdiff_t step)
{
    U8<N> v[64 / N];
    for (int i = 0; i < 64 / N; ++i) v[i] = load<U8<N>>(bytes + i * N);
    for (int bit = 0; bit < 8; ++bit, sets += step) {
        *sets = 0;
        for (int i = 0; i < 64 / N; ++i) {
            *sets |= Simd<N>::signMask(v[i]) << (i * N);
            v[i] += v[i];
        }
    }
}

uint32_t loadMaps(const int32_t* src, int srcStep, int lowest, const BlockMaps& maps)
{
    // These are read beyond the words of the block.
    constexpr int kBordered = BlockMaps::kMaps - BlockMaps::kSigns;
    __builtin_memset(maps.first + BlockMaps::kSigns * maps.size(), 0,
                     size_t(kBordered * maps.size()) * sizeof(uint64_t));
    uint32_t all = 0;
    eachWord(maps, [&](ptrdiff_t word, uint64_t) {
        ptrdiff_t s = word / maps.stride(), w = word % maps.stride();
        WordBytes bytes;
        auto* corner = (const uint8_t*)src + kRows * s * srcStep + 4 * kColumns * w;
        int columns = maps.width - kColumns * int(w), rows = maps.height - kRows * int(s);
        fill(bytes, corner, srcStep, columns < kColumns ? columns : kColumns, rows < kRows ? rows : kRows);
        uint32_t ofWord = bytes.unionOfAll();
        all |= ofWord;
        for (int i = 0; 31 - 8 * i >= lowest; ++i) {
            uint64_t* sets = maps.map(31 - 8 * i) + word;
            if (ofWord >> (24 - 8 * i) & 0xFF)
                spread(bytes.of[i], sets, -maps.size());
            else
                for (int bit = 0; bit < 8; ++bit) sets[-bit * maps.size()] = 0;
        }
    });
    return all & 0x7FFFFFFF;
}

// The MQ encoder with its registers at hand. A stands at the top of its word, so that the number of leading zeros is
// the shift; C follows it.
class Registers {
public:
    QEL_INLINE explicit Registers(MqEncoder& mq) : mq_(mq), a_(mq.a << kUp), c_(mq.c << kUp), ct_(mq.ct) {}
    QEL_INLINE void store() const
    {
        mq_.a = a_ >> kUp;
        mq_.c = c_ >> kUp;
        mq_.ct = ct_;
    }

    // T.800 C.2.4 to C.2.7. Which way a decision goes is a choice of values; only the output of bytes is a branch.
    QEL_INLINE uint8_t* encode(uint8_t recorded, uint8_t* out)
    {
        uint32_t decision = recorded & 1;
        MqState& context = mq_.states[recorded >> 1];
        auto state = load<uint64_t>(&context), next = load<uint64_t>(&kMqStates.of[context.next[decision]]);
        uint32_t qe = uint32_t(context.qe) << kUp, rest = a_ - qe;
        // The more probable symbol has the upper part of the interval, unless that is the smaller one.
        uint32_t takesLower = (context.mps ^ decision) ^ (rest < qe);
        uint32_t shift = uint32_t(__builtin_clz(rest)), below = qe;
        a_ = rest << shift;
        replaceIf(takesLower, a_, qe << context.shift, shift, context.shift, below, 0);
        QEL_BUILD::store(&context, select(shift, next, state));
        c_ = (c_ + below) << shift;
        ct_ -= int(shift);
        if (ct_ > 0) return out;
        store();
        out = lateBytesOut(mq_, out);
        c_ = mq_.c << kUp;
        ct_ = mq_.ct;
        return out;
    }

    // Encodes several decisions 0 of a context where they are the more probable ones and leave its state as it is.
    QEL_INLINE bool encodeZeros(Context context, int count)
    {
        const MqState& state = mq_.states[context];
        uint64_t below = (uint64_t(state.qe) << kUp) * uint64_t(count);
        if (state.mps != 0 || a_ < kLeastA + below) return false;
        a_ -= uint32_t(below);
        c_ += below;
        return true;
    }

private:
    static constexpr int kUp = 16;
    static constexpr uint64_t kLeastA = uint64_t(0x8000) << kUp;

    MqEncoder& mq_;
    uint32_t a_;
    uint64_t c_;
    int ct_;
};

uint8_t* encode(MqEncoder& mq, const uint8_t* decisions, int count, uint8_t* out)
{
    // Most decisions of sparse blocks are runs, and most of these without an end.
    using Several = uint32_t;
    constexpr int kSeveral = sizeof(Several);
    constexpr auto kEmptyRuns = Several(~Several(0) / 0xFF * (kContextRunLength << 1));
    Registers registers(mq);
    const uint8_t* end = decisions + count;
    while (end - decisions >= kSeveral) {
        const uint8_t* next = decisions + kSeveral;
        if (load<Several>(decisions) == kEmptyRuns && registers.encodeZeros(kContextRunLength, kSeveral))
            decisions = next;
        for (; decisions != next; ++decisions) out = registers.encode(*decisions, out);
    }
    for (; decisions != end; ++decisions) out = registers.encode(*decisions, out);
    registers.store();
    return out;
}

uint8_t* pack(RawPacker& raw, const uint8_t* decisions, int count, uint8_t* next)
{
    RawPacker r = raw;
    for (int i = 0; i < count; ++i) next = packBit(r, decisions[i], next);
    raw = r;
    return next;
}

constexpr CodeBlockEncodeKernels kKernels = {
    .load = loadMaps,
    .significance = significance,
    .refinement = refinement,
    .cleanup = cleanup,
    .encode = encode,
    .pack = pack,
};

}
}

const qel::CodeBlockEncodeKernels qel::CodeBlockEncodeKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
