// Kernels of code-block encoding.
#include "jpeg2k/code_block_encode.h"

#include "jpeg2k/distortion_tables.h"
#include "jpeg2k/mq_states.h"
#include "jpeg2k/sample_sets.h"

namespace qel {
namespace QEL_BUILD {
namespace {

constexpr int N = QEL_WIDTH < 16 ? 16 : QEL_WIDTH;
constexpr int kColumns = 16, kRows = 4;

// Other bands have the contexts of LL.
constexpr int kBandHL = 2, kBandHH = 3;

// Decisions as they are recorded, less their lowest bits.
constexpr uint8_t kUniform = kContextUniform << 1, kRunLength = kContextRunLength << 1;

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

// body(sample) for each of a set, in order.
template <class Body> QEL_INLINE void eachSample(uint64_t set, Body body)
{
    for (; set != 0; set &= set - 1) body(__builtin_ctzll(set));
}

// The bytes that are recorded for the samples of a word.
struct Bytes64 {
    uint8_t of[64];

    template <int kBits> QEL_INLINE void fill(const Decisions& decisions, uint8_t offset = 0)
    {
        for (int i = 0; i < 64; i += 8) {
            uint64_t bytes = 0;
            for (int k = 0; k < kBits; ++k) bytes |= spread(decisions.bit[k] >> i & 0xFF) << k;
            store(of + i, bytes | offset * 0x0101010101010101);
        }
    }
    // A byte for each of eight bits.
    static QEL_INLINE uint64_t spread(uint64_t bits)
    {
        uint64_t each = bits * 0x0101010101010101 & 0x8040201008040201;
        return (each + 0x7F7F7F7F7F7F7F7F) >> 7 & 0x0101010101010101;
    }
};

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

// Zero and sign coding of a word's samples.
template <Coding kCoding> struct SampleBytes {
    Bytes64 zero, sign;

    QEL_INLINE void fill(const Neighbours& n, const Surroundings& signs, uint64_t plane, uint64_t added)
    {
        if constexpr (kCoding == Coding::raw) {
            zero.fill<1>({{plane}});
            if (added != 0) sign.fill<1>({{signs.here}});
        } else {
            zero.fill<5>(zeroCoding<kCoding>(n, plane));
            if (added != 0) sign.fill<5>(signCoding(n, signs.neighbours(signs.here), signs.here));
        }
    }
    QEL_INLINE uint8_t* put(int i, uint64_t added, uint8_t* out) const
    {
        out[0] = zero.of[i];
        out[1] = sign.of[i];
        return out + 1 + (added >> i & 1);
    }
};

QEL_INLINE uint64_t seenBelow(const PassMode& mode) { return mode.isCausal ? 0 : ~uint64_t(0); }

template <Coding kCoding> PassRecord significancePass(const BlockMaps& maps, const PassMode& mode, uint8_t* out)
{
    uint64_t *significant = maps.map(BlockMaps::kSignificant), *visited = maps.map(BlockMaps::kVisited);
    const uint64_t *signs = maps.map(BlockMaps::kSigns), *planes = maps.map(mode.plane);
    Reduction reduction(maps, mode);
    eachWord(maps, [&](ptrdiff_t w, uint64_t samples) {
        auto around = Surroundings::of(significant + w, maps.stride(), seenBelow(mode));
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
        SampleBytes<kCoding> bytes;
        bytes.fill(around.neighbours(significant[w]), Surroundings::of(signs + w, maps.stride(), seenBelow(mode)),
                   plane, added);
        eachSample(members, [&](int i) { out = bytes.put(i, added, out); });
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
        eachSample(members, [&](int i) { *out++ = bytes.of[i]; });
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

// A column of four samples without significant neighbours: whether one becomes significant, and which.
QEL_INLINE uint8_t* putRun(uint64_t column, const uint8_t* signs, uint8_t* out)
{
    if (column == 0) {
        *out = kRunLength;
        return out + 1;
    }
    int first = __builtin_ctzll(column);
    out[0] = kRunLength | 1;
    out[1] = uint8_t(kUniform | first >> 1);
    out[2] = uint8_t(kUniform | (first & 1));
    out[3] = signs[first];
    return out + 4;
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
        significant[w] |= added;
        auto neighbours = around.neighbours(significant[w]);
        auto before = around.neighbours(around.here);
        // Runs: whole columns of four without a neighbour when the scan comes to them.
        uint64_t busy =
            neighbours.left | neighbours.upLeft | neighbours.downLeft | before.any() | around.here | ~samples;
        uint64_t runs = ~wholeColumns(busy);
        members = (members & ~runs) | (runs & (kTopRow | behindFirst(added & runs)));
        SampleBytes<kCoding> bytes;
        bytes.fill(neighbours, Surroundings::of(signs + w, maps.stride(), seenBelow(mode)), planes[w], added);
        eachSample(members, [&](int i) {
            if (runs & kTopRow & uint64_t(1) << i)
                out = putRun(added >> i & 15, bytes.sign.of + i, out);
            else
                out = bytes.put(i, added, out);
        });
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

// The magnitudes' bytes of a word, most significant first, in the order of the scan.
struct WordBytes {
    uint8_t of[4][64];
};
QEL_INLINE uint32_t gather(const int32_t* src, int srcStep, int columns, int rows, WordBytes& bytes)
{
    uint32_t all = 0;
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < columns; ++c) {
            auto value = load<uint32_t>((const uint8_t*)src + (ptrdiff_t)r * srcStep + 4 * c);
            all |= value;
            for (int k = 0; k < 4; ++k) bytes.of[k][kRows * c + r] = uint8_t(value >> (24 - 8 * k));
        }
    return all;
}

uint32_t loadMaps(const int32_t* src, int srcStep, int lowest, const BlockMaps& maps)
{
    __builtin_memset(maps.first, 0, size_t(BlockMaps::kMaps * maps.size()) * sizeof(uint64_t));
    uint32_t all = 0;
    for (int s = 0; s < maps.stripes; ++s)
        for (int w = 0; w < maps.words; ++w) {
            WordBytes bytes = {};
            auto* corner = (const int32_t*)((const uint8_t*)src + (ptrdiff_t)kRows * s * srcStep) + kColumns * w;
            int columns = maps.width - kColumns * w, rows = maps.height - kRows * s;
            all |= gather(corner, srcStep, columns < kColumns ? columns : kColumns, rows < kRows ? rows : kRows, bytes);
            for (int plane = 31; plane >= lowest; --plane) {
                uint64_t set = 0;
                uint8_t* p = bytes.of[(31 - plane) / 8];
                for (int i = 0; i < 64; i += N) {
                    auto v = load<U8<N>>(p + i);
                    set |= Simd<N>::signMask(v) << i;
                    store(p + i, v + v);
                }
                maps.map(plane)[s * maps.stride() + w] = set;
            }
        }
    return all & 0x7FFFFFFF;
}

// All ones for 1, 0 for 0. The compiler cannot know that there is nothing between, and makes no branch of it: which
// way a decision goes is what no processor predicts.
QEL_INLINE uint32_t masked(uint32_t bit)
{
    uint32_t mask = 0 - bit;
    asm("" : "+r"(mask));
    return mask;
}
QEL_INLINE uint32_t chosen(uint32_t mask, uint32_t a, uint32_t b) { return b ^ ((a ^ b) & mask); }

uint8_t* encode(MqEncoder& mq, const uint8_t* decisions, int count, uint8_t* out)
{
    uint64_t c = mq.c;
    uint32_t a = mq.a;
    int ct = mq.ct;
    for (int i = 0; i < count; ++i) {
        uint32_t decision = decisions[i];
        MqState& context = mq.states[decision >> 1];
        MqState state = context;
        uint32_t isLps = uint32_t(state ^ decision) & 1, qe = uint32_t(state) >> 16, rest = a - qe;
        MqState next = kMqStates.of[state >> (32 + 16 * isLps) & 0xFFFF];
        // The more probable symbol has the upper part of the interval, unless that is the smaller one.
        uint32_t takesLower = masked(isLps ^ (rest < qe));
        uint32_t shift = (rest < 0x8000) + (rest < 0x4000), shiftOfQe = uint32_t(state) >> 8 & 0xFF;
        a = chosen(takesLower, qe << shiftOfQe, rest << shift);
        shift = chosen(takesLower, shiftOfQe, shift);
        context = shift != 0 ? next : state;
        c = (c + (qe & ~takesLower)) << shift;
        ct -= int(shift);
        if (ct <= 0) {
            mq.c = c, mq.ct = ct;
            out = lateBytesOut(mq, out);
            c = mq.c, ct = mq.ct;
        }
    }
    mq.a = a, mq.c = c, mq.ct = ct;
    return out;
}

uint8_t* pack(RawPacker& raw, const uint8_t* decisions, int count, uint8_t* next)
{
    RawPacker r = raw;
    for (int i = 0; i < count; ++i) next = packBit(r, decisions[i], next);
    raw = r;
    return next;
}

}
}

const CodeBlockEncodeKernels CodeBlockEncodeKernels::QEL_BUILD = {
    qel::QEL_BUILD::loadMaps, qel::QEL_BUILD::significance, qel::QEL_BUILD::refinement,
    qel::QEL_BUILD::cleanup,  qel::QEL_BUILD::encode,       qel::QEL_BUILD::pack};

}
