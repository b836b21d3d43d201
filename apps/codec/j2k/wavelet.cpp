// SPDX-License-Identifier: Apache-2.0
// Levels are transformed in pieces of some rows, which stay in the cache between rows and columns. The library's row
// and column functions take what lies beside a line as it is: its symmetric extension is made here.
#include "codec/j2k/wavelet.h"

#include <algorithm>
#include <cstring>

#include "codec/base/library.h"
#include "codec/base/parallel.h"

namespace qel::codec::j2k {

namespace {

using enum BandKind;

// What both directions of a piece may fill of a core's second cache.
constexpr size_t kPieceBytes = 256 << 10;
// Samples of a level that are worth the start of threads.
constexpr uint64_t kWorthThreads = 1 << 16;
constexpr ptrdiff_t kRunsPerThread = 2;

// The functions that filter samples of one type. `reach`: how far each half of a line is looked at beyond its ends, in
// inverse direction.
template <class T> struct Filter {
    using Forward = QelStatus(const T*, int, T*, int, T*, int, QelSize, int);
    using Inverse = QelStatus(const T*, int, const T*, int, QelSize, T*, int, int);
    ptrdiff_t reach;
    Forward *forwardRow, *forwardColumn;
    Inverse *inverseRow, *inverseColumn;
};
template <class T> constexpr Filter<T> kFilter = {};
template <>
constexpr Filter<int32_t> kFilter<int32_t> = {1, qeliWTFwdRow_B53_JPEG2K_32s_C1R, qeliWTFwdCol_B53_JPEG2K_32s_C1R,
                                              qeliWTInvRow_B53_JPEG2K_32s_C1R, qeliWTInvCol_B53_JPEG2K_32s_C1R};
template <> constexpr Filter<float> kFilter<float> = {2, qeliWTFwdRow_D97_JPEG2K_32f_C1R,
                                                      qeliWTFwdCol_D97_JPEG2K_32f_C1R, qeliWTInvRow_D97_JPEG2K_32f_C1R,
                                                      qeliWTInvCol_D97_JPEG2K_32f_C1R};

// Single samples at odd positions.
int32_t doubled(int32_t sample) { return int32_t(uint32_t(sample) * 2); }
int32_t halved(int32_t sample) { return sample >> 1; }
float doubled(float sample) { return 2 * sample; }
float halved(float sample) { return sample / 2; }

// Samples beside a line that any filter looks at in forward direction, beyond whole pairs.
constexpr ptrdiff_t kForwardReach = 4;

// A line of samples, low and high ones in turns.
struct Line {
    Line(uint32_t from, uint32_t to) : length(ptrdiff_t(to) - from), phase(int(from & 1)) {}

    ptrdiff_t pairs() const { return (length + 1) / 2; }
    ptrdiff_t count(bool isHigh) const { return (length + (isHigh == bool(phase))) / 2; }
    // The sample of the line that its symmetric extension has at `at`; lines have two samples or more.
    ptrdiff_t reflected(ptrdiff_t at) const
    {
        ptrdiff_t period = 2 * (length - 1);
        at = std::abs(at) % period;
        return std::min(at, period - at);
    }
    // The same within one half.
    ptrdiff_t reflected(ptrdiff_t at, bool isHigh) const
    {
        int first = isHigh != bool(phase);
        return (reflected(2 * at + first) - first) / 2;
    }

    ptrdiff_t length;
    int phase;
};

// A few rows with room for the extension on each side, and rows above the first one.
template <class T> class Rows {
public:
    Rows(ptrdiff_t length, ptrdiff_t above, ptrdiff_t count)
        : above_(above), plane_(uint32_t(length + 2 * kRoom), uint32_t(above + count), Plane<T>::Fill::none)
    {}
    int step() const { return plane_.step(); }
    T* at(ptrdiff_t row) { return plane_.row(size_t(above_ + row)) + kRoom; }

private:
    static constexpr ptrdiff_t kRoom = 16; // a cache line
    ptrdiff_t above_;
    Plane<T> plane_;
};

template <class T> void copy(const T* src, ptrdiff_t count, T* dst)
{
    std::memcpy(dst, src, size_t(count) * sizeof(T));
}

// One half of a line, with its extension, at `dst`.
template <class T> void extendHalf(const T* src, const Line& line, bool isHigh, T* dst)
{
    ptrdiff_t count = line.count(isHigh);
    copy(src, count, dst);
    for (ptrdiff_t i = 1; i <= kFilter<T>.reach; ++i) dst[-i] = src[line.reflected(-i, isHigh)];
    for (ptrdiff_t i = count; i < line.pairs() + kFilter<T>.reach; ++i) dst[i] = src[line.reflected(i, isHigh)];
}

// `halves` has room for both halves of a line.
template <class T> void inverseRow(const T* low, const T* high, const Line& line, Rows<T>& halves, T* dst)
{
    if (line.length == 1) {
        *dst = line.phase ? halved(*high) : *low;
        return;
    }
    extendHalf(low, line, false, halves.at(0));
    extendHalf(high, line, true, halves.at(1));
    check(kFilter<T>.inverseRow(halves.at(0), halves.step(), halves.at(1), halves.step(), {int(line.pairs()), 1}, dst,
                                halves.step(), line.phase));
}

// `src` gets its extension.
template <class T> void forwardRow(T* src, const Line& line, T* low, T* high, int step)
{
    if (line.length == 1) {
        *(line.phase ? high : low) = line.phase ? doubled(*src) : *src;
        return;
    }
    for (ptrdiff_t i = 1; i <= kForwardReach; ++i) src[-i] = src[line.reflected(-i)];
    for (ptrdiff_t i = line.length; i < 2 * line.pairs() + kForwardReach; ++i) src[i] = src[line.reflected(i)];
    check(kFilter<T>.forwardRow(src, step, low, step, high, step, {int(line.pairs()), 1}, line.phase));
}

template <class T> void scaleRow(T* row, ptrdiff_t length, T (*scaled)(T))
{
    std::transform(row, row + length, row, scaled);
}

// Two bands next to each other: the horizontal halves of rows.
template <class T> struct BandPair {
    Plane<T>&low, &high;
};
template <class T> BandPair<T> bandPair(Subbands<T>& bands, int level, bool isHigh)
{
    return {bands.band(level, isHigh ? lh : ll), bands.band(level, isHigh ? hh : hl)};
}

// Some pairs of rows, one piece of them after the other.
struct Run {
    ptrdiff_t first, end, atOnce;

    // Calls body(first pair, count) for each piece.
    template <class Body> void inPieces(Body body) const
    {
        for (ptrdiff_t at = first; at < end; at += atOnce) body(at, std::min(atOnce, end - at));
    }
};

// Calls body(run) for runs that make up a level.
template <class T, class Body> void inRuns(const Line& across, const Line& down, int threads, Body body)
{
    ptrdiff_t rowBytes = across.length * ptrdiff_t(sizeof(T)), pairs = down.pairs();
    ptrdiff_t atOnce = std::clamp<ptrdiff_t>(ptrdiff_t(kPieceBytes) / (2 * rowBytes), 4, 64);
    if (uint64_t(across.length) * uint64_t(down.length) < kWorthThreads) threads = 1;
    ptrdiff_t runs = threads == 1 ? 1 : std::min(kRunsPerThread * threads, (pairs + atOnce - 1) / atOnce);
    forEachInParallel(int(runs), threads, [&](int run) {
        body(Run{pairs * run / runs, pairs * (run + 1) / runs, atOnce});
    });
}

template <class T>
void inverseRun(Subbands<T>& bands, int level, const Line& across, const Line& down, const Run& run, Plane<T>& dst)
{
    constexpr ptrdiff_t kReach = kFilter<T>.reach;
    Rows<T> halves(across.pairs(), 0, 2);
    Rows<T> rows[] = {{across.length, kReach, run.atOnce + kReach}, {across.length, kReach, run.atOnce + kReach}};
    run.inPieces([&](ptrdiff_t first, ptrdiff_t count) {
        for (bool isHigh : {false, true}) {
            BandPair<T> pair = bandPair(bands, level, isHigh);
            Rows<T>& half = rows[isHigh];
            ptrdiff_t i = -kReach;
            // Some rows are known from the piece before.
            for (; first > run.first && i < kReach; ++i) copy(half.at(run.atOnce + i), across.length, half.at(i));
            for (; i < count + kReach; ++i) {
                size_t row = size_t(down.reflected(first + i, isHigh));
                inverseRow(pair.low.row(row), pair.high.row(row), across, halves, half.at(i));
            }
        }
        check(kFilter<T>.inverseColumn(rows[0].at(0), rows[0].step(), rows[1].at(0), rows[1].step(),
                                       {int(across.length), int(count)}, dst.row(2 * size_t(first)), dst.step(),
                                       down.phase));
    });
}

// The smaller resolution is the LL band of its level.
template <class T> void inverseLevel(Subbands<T>& bands, int level, const Rect& rect, Plane<T>& dst, int threads)
{
    const Line across(rect.x0, rect.x1), down(rect.y0, rect.y1);
    if (rect.isEmpty()) return;
    if (down.length > 1)
        return inRuns<T>(across, down, threads,
                         [&](const Run& run) { inverseRun(bands, level, across, down, run, dst); });
    Rows<T> halves(across.pairs(), 0, 2);
    BandPair<T> pair = bandPair(bands, level, down.phase);
    inverseRow(pair.low.row(0), pair.high.row(0), across, halves, dst.row(0));
    if (down.phase) scaleRow(dst.row(0), across.length, halved);
}

// Rows of pairs with all that the filter looks at: those of `src`, or copies of them where the extension is needed.
template <class T> class ExtendedRows {
public:
    ExtendedRows(const Plane<T>& src, const Line& across, const Line& down, ptrdiff_t atOnce)
        : src_(src), across_(across), down_(down), copies_(across.length, kForwardReach, 2 * atOnce + kForwardReach)
    {}
    void moveTo(ptrdiff_t first, ptrdiff_t count)
    {
        ptrdiff_t from = 2 * first - kForwardReach, to = 2 * (first + count) + kForwardReach;
        start = src_.row(size_t(2 * first));
        step = src_.step();
        if (from >= 0 && to <= down_.length) return;
        for (ptrdiff_t r = from; r < to; ++r)
            copy(src_.row(size_t(down_.reflected(r))), across_.length, copies_.at(r - 2 * first));
        start = copies_.at(0);
        step = copies_.step();
    }

    const T* start = nullptr;
    int step = 0;

private:
    const Plane<T>& src_;
    const Line &across_, &down_;
    Rows<T> copies_;
};

template <class T> void forwardRun(const Plane<T>& src, const Line& across, const Line& down, const Run& run,
                                   Subbands<T>& bands, int level)
{
    Rows<T> rows[] = {{across.length, 0, run.atOnce}, {across.length, 0, run.atOnce}};
    ExtendedRows<T> samples(src, across, down, run.atOnce);
    run.inPieces([&](ptrdiff_t first, ptrdiff_t count) {
        samples.moveTo(first, count);
        check(kFilter<T>.forwardColumn(samples.start, samples.step, rows[0].at(0), rows[0].step(), rows[1].at(0),
                                       rows[1].step(), {int(across.length), int(count)}, down.phase));
        for (bool isHigh : {false, true}) {
            BandPair<T> pair = bandPair(bands, level, isHigh);
            for (ptrdiff_t i = 0; i < std::min(count, down.count(isHigh) - first); ++i)
                forwardRow(rows[isHigh].at(i), across, pair.low.row(size_t(first + i)),
                           pair.high.row(size_t(first + i)), rows[isHigh].step());
        }
    });
}

template <class T> void forwardLevel(const Plane<T>& src, const Rect& rect, Subbands<T>& bands, int level, int threads)
{
    const Line across(rect.x0, rect.x1), down(rect.y0, rect.y1);
    if (rect.isEmpty()) return;
    if (down.length > 1)
        return inRuns<T>(across, down, threads,
                         [&](const Run& run) { forwardRun(src, across, down, run, bands, level); });
    Rows<T> row(across.length, 0, 1);
    copy(src.row(0), across.length, row.at(0));
    if (down.phase) scaleRow(row.at(0), across.length, doubled);
    BandPair<T> pair = bandPair(bands, level, down.phase);
    forwardRow(row.at(0), across, pair.low.row(0), pair.high.row(0), row.step());
}

template <class T> Plane<T> planeOf(const Rect& rect, typename Plane<T>::Fill fill)
{
    return rect.isEmpty() ? Plane<T>() : Plane<T>(rect.width(), rect.height(), fill);
}

}

template <class T> Subbands<T>::Subbands(const Rect& rect, int levels, typename Plane<T>::Fill fill)
    : rect_(rect), lowest_(planeOf<T>(bandRect(rect, levels, ll), fill)), high_(size_t(levels))
{
    for (int level = 1; level <= levels; ++level)
        for (BandKind kind : {lh, hl, hh}) band(level, kind) = planeOf<T>(bandRect(rect, level, kind), fill);
}

template <class T> Plane<T> inverseWavelet(Subbands<T> bands, int threads)
{
    for (int level = bands.levels(); level > 0; --level) {
        Rect rect = resolutionRect(bands.rect(), level - 1);
        Plane<T> larger = planeOf<T>(rect, Plane<T>::Fill::none);
        inverseLevel(bands, level, rect, larger, threads);
        for (BandKind kind : {lh, hl, hh}) bands.band(level, kind) = {};
        bands.band(level, ll) = std::move(larger);
    }
    return std::move(bands.band(1, ll));
}

template <class T> Subbands<T> forwardWavelet(Plane<T> samples, const Rect& rect, int levels, int threads)
{
    constexpr auto kFill = Plane<T>::Fill::none;
    Subbands<T> bands(rect, levels, kFill);
    for (int level = 1; level <= levels; ++level) {
        bands.band(level, ll) = planeOf<T>(resolutionRect(rect, level), kFill);
        forwardLevel(samples, resolutionRect(rect, level - 1), bands, level, threads);
        samples = std::move(bands.band(level, ll));
    }
    bands.band(1, ll) = std::move(samples);
    return bands;
}

template class Subbands<int32_t>;
template class Subbands<float>;
template Plane<int32_t> inverseWavelet(Subbands<int32_t>, int);
template Plane<float> inverseWavelet(Subbands<float>, int);
template Subbands<int32_t> forwardWavelet(Plane<int32_t>, const Rect&, int, int);
template Subbands<float> forwardWavelet(Plane<float>, const Rect&, int, int);

}
