// SPDX-License-Identifier: Apache-2.0
// Wavelets of rows and columns: the textbook's values, and exactly the promised samples beside the region; the exported
// line functions.
#include <gtest/gtest.h>

#include "argument_faults.h"
#include "guarded.h"
#include "jpeg2k/transform/line_mover_doors.h"
#include "jpeg2k/transform/wavelet_doors.h"
#include "random.h"
#include "wavelet_functions.h"

using namespace qel::test;

namespace {

template <class T> using Forward = QelStatus (*)(const T*, int, T*, int, T*, int, QelSize, int);
template <class T> using Inverse = QelStatus (*)(const T*, int, const T*, int, QelSize, T*, int, int);

struct Lines53Of16 : Textbook53<int16_t> {
    static constexpr Forward<Sample> kForward[] = {qeliWTFwdRow_B53_JPEG2K_16s_C1R, qeliWTFwdCol_B53_JPEG2K_16s_C1R};
    static constexpr Inverse<Sample> kInverse[] = {qeliWTInvRow_B53_JPEG2K_16s_C1R, qeliWTInvCol_B53_JPEG2K_16s_C1R};
};
struct Lines53Of32 : Textbook53<int32_t> {
    static constexpr Forward<Sample> kForward[] = {qeliWTFwdRow_B53_JPEG2K_32s_C1R, qeliWTFwdCol_B53_JPEG2K_32s_C1R};
    static constexpr Inverse<Sample> kInverse[] = {qeliWTInvRow_B53_JPEG2K_32s_C1R, qeliWTInvCol_B53_JPEG2K_32s_C1R};
};
struct Lines97OfFloat : TextbookFloat97<float> {
    static constexpr Forward<Sample> kForward[] = {qeliWTFwdRow_D97_JPEG2K_32f_C1R, qeliWTFwdCol_D97_JPEG2K_32f_C1R};
    static constexpr Inverse<Sample> kInverse[] = {qeliWTInvRow_D97_JPEG2K_32f_C1R, qeliWTInvCol_D97_JPEG2K_32f_C1R};
};

// How far the functions read beside a region, in the order of the phases.
struct Reach {
    int before, after;
};
template <class F> constexpr Reach kForwardReach[2] = {{F::kReversible ? 2 : 4, F::kReversible ? 1 : 3},
                                                       {F::kReversible ? 1 : 3, F::kReversible ? 2 : 4}};
template <class F> struct InverseReach {
    Reach low, high;
};
template <class F> constexpr InverseReach<F> kInverseReach[2] = {
    {F::kReversible ? Reach{0, 1} : Reach{1, 2}, F::kReversible ? Reach{1, 1} : Reach{2, 2}},
    {F::kReversible ? Reach{1, 0} : Reach{2, 1}, F::kReversible ? Reach{1, 1} : Reach{2, 2}}};

template <class T> T anySample(Random& random)
{
    if constexpr (std::is_same_v<T, float>) return float(random.between(-1 << 20, 1 << 20)) / 64;
    T v;
    random.fill(&v, 1);
    return v;
}

// `lines` lines side by side: rows one below the other, or columns. Between the first (last) sample that may be read
// and the page that faults there is nothing, where the page can be: before the first line, after the last.
template <class T> class Region {
public:
    Region(bool columns, int lines, int len, Reach reach, Fault fault)
        : columns_(columns), lines_(lines), len_(len), reach_(reach), whole_(len + reach.before + reach.after),
          memory_(size_t(lines) * size_t(whole_), fault)
    {}
    T* start() { return memory_.data() + (columns_ ? reach_.before * lines_ : reach_.before); }
    int step() const { return int(sizeof(T)) * (columns_ ? lines_ : whole_); }
    // Sample i of a line.
    T& at(int line, int i) { return columns_ ? start()[i * lines_ + line] : start()[line * whole_ + i]; }
    bool intact() const { return memory_.intact(); }
    void fill(Random& random)
    {
        for (size_t i = 0; i < memory_.size(); ++i) memory_.data()[i] = anySample<T>(random);
    }

private:
    bool columns_;
    int lines_, len_;
    Reach reach_;
    int whole_;
    Guarded<T> memory_;
};

template <class F> class WaveletLines : public testing::Test {};
using Filters = testing::Types<Lines53Of16, Lines53Of32, Lines97OfFloat>;
TYPED_TEST_SUITE(WaveletLines, Filters);

template <class F> void checkForward(Random& random, bool columns, int pairs, int phase, Fault fault)
{
    using T = typename F::Sample;
    const int lines = columns ? pairs + 5 : 3;
    const Reach reach = kForwardReach<F>[phase];
    Region<T> src(columns, lines, 2 * pairs, reach, fault), low(columns, lines, pairs, {0, 0}, fault),
        high(columns, lines, pairs, {0, 0}, Fault::after);
    src.fill(random);
    QelSize size = columns ? QelSize{lines, pairs} : QelSize{pairs, lines};
    ASSERT_EQ(F::kForward[columns](src.start(), src.step(), low.start(), low.step(), high.start(), high.step(), size,
                                   5 * phase),
              qelStsNoErr);
    ASSERT_TRUE(low.intact() && high.intact());
    for (int line = 0; line < lines; ++line) {
        std::vector<T> extended(4, T(1));
        for (int i = -reach.before; i < 2 * pairs + reach.after; ++i) extended.push_back(src.at(line, i));
        extended.resize(extended.size() + 4, T(1));
        const int start = 4 + reach.before;
        liftExtended<F>(extended, (start + phase) % 2, true);
        for (int i = 0; i < 2 * pairs; ++i) {
            bool isLow = (i + phase) % 2 == 0;
            ASSERT_EQ((isLow ? low : high).at(line, i / 2), extended[size_t(start + i)]) << line << ' ' << i;
        }
    }
}

template <class F> void checkInverse(Random& random, bool columns, int pairs, int phase, Fault fault)
{
    using T = typename F::Sample;
    const int lines = columns ? pairs + 5 : 3;
    const auto reach = kInverseReach<F>[phase];
    Region<T> low(columns, lines, pairs, reach.low, fault), high(columns, lines, pairs, reach.high, fault),
        dst(columns, lines, 2 * pairs, {0, 0}, Fault::after);
    low.fill(random), high.fill(random);
    QelSize size = columns ? QelSize{lines, pairs} : QelSize{pairs, lines};
    ASSERT_EQ(
        F::kInverse[columns](low.start(), low.step(), high.start(), high.step(), size, dst.start(), dst.step(), phase),
        qelStsNoErr);
    ASSERT_TRUE(dst.intact());
    for (int line = 0; line < lines; ++line) {
        // Samples that may not be read count as 1: if they mattered, the result would not be the function's.
        constexpr int kAround = 12;
        std::vector<T> extended;
        for (int i = -kAround; i < 2 * pairs + kAround; ++i) {
            bool isLow = (i + phase) % 2 == 0;
            int at = (i - (i & 1)) / 2;
            Reach r = isLow ? reach.low : reach.high;
            bool given = at >= -r.before && at < pairs + r.after;
            extended.push_back(given ? (isLow ? low : high).at(line, at) : T(1));
        }
        liftExtended<F>(extended, (kAround + phase) % 2, false);
        for (int i = 0; i < 2 * pairs; ++i)
            ASSERT_EQ(dst.at(line, i), extended[size_t(kAround + i)]) << line << ' ' << i;
    }
}

TYPED_TEST(WaveletLines, EqualTheTextbookAndReadNoMoreThanPromised)
{
    Random random(1);
    for (int pairs = 1; pairs <= 70; ++pairs)
        for (int kind = 0; kind < 8; ++kind) {
            SCOPED_TRACE(testing::Message() << pairs << " pairs, kind " << kind);
            Fault fault = kind & 4 ? Fault::before : Fault::after;
            checkForward<TypeParam>(random, kind & 2, pairs, kind & 1, fault);
            checkInverse<TypeParam>(random, kind & 2, pairs, kind & 1, fault);
            if (testing::Test::HasFatalFailure()) return;
        }
}

TYPED_TEST(WaveletLines, OrderOfFaults)
{
    using T = typename TypeParam::Sample;
    T whole[24] = {}, low[8] = {}, high[8] = {};
    for (auto forward : TypeParam::kForward)
        expectFaults(forward, {whole + 8, 4, low, 4, high, 4, {1, 1}, 0}, null<0>, null<2>, null<4>, step<1>, step<3>,
                     step<5>, size<6>);
    for (auto inverse : TypeParam::kInverse)
        expectFaults(inverse, {low, 4, high, 4, {1, 1}, whole, 4, 0}, null<0>, null<2>, null<5>, step<1>, step<3>,
                     step<6>, size<4>);
}

// How much extension the line movers write: as much as the filter needs, and not a sample more.
struct Extensions {
    Reach forward, inverse;
};
Extensions extensionsOf53(int len, bool high)
{
    const bool lastIsHigh = (len + high) % 2 == 0;
    return {{high ? 1 : 2, lastIsHigh ? 1 : 2}, {high ? 2 : 1, lastIsHigh ? 2 : 1}};
}
Extensions extensionsOf97(int, bool) { return {{4, 4}, {4, 4}}; }

// A line by hand, as a tile function would do it: read with extension, lifted, written in halves; and back. Every phase
// but 0 is odd.
template <class F> struct LineDoors {
    using T = typename F::Sample;
    Extensions (*extensions)(int, bool);
    void (*readRow)(const T*, T*, int, int);
    void (*readHalves)(const T*, int, T*, int, int);
    void (*forward)(T*, int, int);
    void (*inverse)(T*, int, int);
    void (*writeHalves)(const T*, T*, int, int, int);
    void (*write)(const T*, T*, int);
};
template <class F> void lineByHand(const LineDoors<F>& doors)
{
    using T = typename F::Sample;
    Random random(5);
    for (int len = 3; len < 40; ++len)
        for (int phase : {0, 1, 2, -4}) {
            SCOPED_TRACE(testing::Message() << len << ' ' << phase);
            std::vector<T> src(static_cast<size_t>(len)), back(src), column(2 * src.size());
            for (auto& sample : src) sample = T(random.between(-4000, 4000));
            const Extensions extensions = doors.extensions(len, phase != 0);
            const auto [before, after] = extensions.forward;
            Guarded<T> room(size_t(before + len + after));
            auto expected = forwardTile<F>({phase != 0, 0, len, 1, src}).samples;
            doors.readRow(src.data(), room.data() + before, len, phase);
            ASSERT_TRUE(room.intact());
            doors.forward(room.data() + before, len, phase);
            doors.writeHalves(room.data() + before, column.data(), 2 * sizeof(T), len, phase);
            for (int i = 0; i < len; ++i) ASSERT_EQ(column[size_t(2 * i)], expected[size_t(i)]) << i;

            const auto [beforeHalves, afterHalves] = extensions.inverse;
            Guarded<T> halves(size_t(beforeHalves + len + afterHalves));
            auto tile = inverseTile<F>({phase != 0, 0, len, 1, expected}).samples;
            doors.readHalves(column.data(), 2 * sizeof(T), halves.data() + beforeHalves, len, phase);
            ASSERT_TRUE(halves.intact());
            doors.inverse(halves.data() + beforeHalves, len, phase);
            doors.write(halves.data() + beforeHalves, back.data(), len);
            ASSERT_EQ(back, tile);
        }
}
TEST(WaveletDoors, LinesByHand)
{
    lineByHand<Textbook53<int16_t>>({extensionsOf53, ownqj_ReadExt_Row_16s, ownqj_ReadInterleaveExt_Col_16s,
                                     ownqj_WTFwd_B53_16s_I, ownqj_WTInv_B53_16s_I, ownqj_WriteInterleave_Col_16s,
                                     ownqj_Write_Row_16s});
    lineByHand<Textbook53<int32_t>>({extensionsOf53, ownqj_ReadExt_Row_32s, ownqj_ReadInterleaveExt_Col_32s,
                                     ownqj_WTFwd_B53_32s_I, ownqj_WTInv_B53_32s_I, ownqj_WriteInterleave_Col_32s,
                                     ownqj_Write_Row_32s});
    auto four16 = [](const int16_t* src, int16_t* dst, int len, int) { ownqj_ReadExt4_Row_16s(src, dst, len); };
    lineByHand<TextbookFixed97>({extensionsOf97, four16, ownqj_ReadInterleaveExt4_Col_16s, ownqj_WTFwd_D97_Row_16s,
                                 ownqj_WTInv_D97_Row_16s, ownqj_WriteInterleave_Col_16s, ownqj_Write_Row_16s});
    auto four32 = [](const int32_t* src, int32_t* dst, int len, int) { ownqj_ReadExt4_Row_32s(src, dst, len); };
    lineByHand<TextbookFloat97<int32_t>>({extensionsOf97, four32, ownqj_ReadInterleaveExt4_Col_32s,
                                          ownqj_WTFwd_D97_Col_32s, ownqj_WTInv_D97_Col_32s,
                                          ownqj_WriteInterleave_Col_32s, ownqj_Write_Row_32s});
}

// Results that are streamed are the same results.
TEST(WaveletDoors, StreamedRows)
{
    using Rows = std::vector<int32_t>;
    Random random(6);
    for (int pairs : {1, 5, 700, 3000})
        for (int phase = 0; phase < 2; ++phase) {
            const size_t n = size_t(pairs);
            Rows src(2 * n + 4), half(n + 2);
            random.fill(src.data(), src.size()), random.fill(half.data(), half.size());
            auto forward = [&](auto door) {
                Rows low(n), high(n);
                door(src.data() + 2, low.data(), high.data(), pairs, phase);
                return std::pair(low, high);
            };
            auto inverse = [&](auto door) {
                Rows back(2 * n);
                door(half.data() + 1, src.data() + 1, back.data(), pairs, phase);
                return back;
            };
            ASSERT_EQ(forward(ownqj_WTFwd_B53_32s), forward(ownqj_WTFwd_B53_32s_NT)) << pairs << ' ' << phase;
            ASSERT_EQ(inverse(ownqj_WTInv_B53_32s), inverse(ownqj_WTInv_B53_32s_NT)) << pairs << ' ' << phase;
        }
}

}
