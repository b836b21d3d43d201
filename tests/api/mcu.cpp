// SPDX-License-Identifier: Apache-2.0
// MCU conversion: every function against the written arithmetic, pixel by pixel; order of faults.
#include "qeljx.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "argument_faults.h"
#include "guarded.h"
#include "jpeg/colour/mcu_doors.h"
#include "pixel_layouts.h"
#include "random.h"

using namespace qel::test;

namespace {

// Two pixels with one Cb and one Cr.
Pixel getPair(const uint8_t* const* rows, int x)
{
    const uint8_t* pair = rows[0] + x / 2 * 4;
    return {pair[x % 2 * 2], pair[1], pair[3]};
}
void putPair(uint8_t* const* rows, int x, Pixel p)
{
    uint8_t* pair = rows[0] + x / 2 * 4;
    pair[x % 2 * 2] = uint8_t(p.a), pair[1] = uint8_t(p.b), pair[3] = uint8_t(p.c);
}

const Layout kPairs = {2, 1, getPair, putPair};

// Samples around 0 to a pixel. Products in 64 bits: any sample is allowed.
Pixel decoded(bool colours, int y, int64_t cb, int64_t cr, int k)
{
    if (!colours) return {clamp(y + 128), clamp(int(cb) + 128), clamp(int(cr) + 128), 0};
    return {clamp(y + int((91881 * cr) >> 16) + 128), clamp(y + int((-22554 * cb - 46802 * cr) >> 16) + 128),
            clamp(y + int((116130 * cb) >> 16) + 128), (k + 128) & 255};
}
Pixel encoded(bool colours, Pixel p)
{
    if (!colours) return p;
    return {(19595 * p.a + 38470 * p.b + 7471 * p.c + 32768) >> 16,
            (-11059 * p.a - 21709 * p.b + 32768 * p.c + 8421375) >> 16,
            (32768 * p.a - 27439 * p.b - 5329 * p.c + 8421375) >> 16, p.k};
}

using Decode = std::function<QelStatus(const int16_t* const*, uint8_t*, int)>;
using Encode = std::function<QelStatus(const uint8_t*, int, int16_t* const*)>;
// Its own function and the internal one of the same name.
template <class T> Decode decoder(QelStatus (*f)(const int16_t* const*, T*, int))
{
    return [f](auto src, uint8_t* dst, int step) { return f(src, (T*)dst, step); };
}
template <class T> Encode encoder(QelStatus (*f)(const T*, int, int16_t* const*))
{
    return [f](const uint8_t* src, int step, auto dst) { return f((const T*)src, step, dst); };
}
template <class T> Decode door(void (*f)(const int16_t* const*, T*, int))
{
    return [f](auto src, uint8_t* dst, int step) { return f(src, (T*)dst, step), qelStsNoErr; };
}
template <class T> Encode door(void (*f)(const T*, int, int16_t* const*))
{
    return [f](const uint8_t* src, int step, auto dst) { return f((const T*)src, step, dst), qelStsNoErr; };
}

template <class Function> struct Member {
    const char* name;
    int h, v; // pixels for one sample of chroma
    bool colours;
    Layout format;
    Function function, internal;

    bool hasK() const { return format.bytes == 4; }
};

#define QEL_DECODER(H, V, COLOURS, FORMAT, NAME)                                                                       \
    Member<Decode> { #NAME, H, V, COLOURS, FORMAT, decoder(qeli##NAME), door(ownqj_##NAME) }
#define QEL_ENCODER(H, V, COLOURS, FORMAT, NAME)                                                                       \
    Member<Encode> { #NAME, H, V, COLOURS, FORMAT, encoder(qeli##NAME), door(ownqj_##NAME) }

const std::vector<Member<Decode>> kDecoders = {
    QEL_DECODER(1, 1, true, kRgb, YCbCr444ToRGBLS_MCU_16s8u_P3C3R),
    QEL_DECODER(2, 1, true, kRgb, YCbCr422ToRGBLS_MCU_16s8u_P3C3R),
    QEL_DECODER(2, 2, true, kRgb, YCbCr411ToRGBLS_MCU_16s8u_P3C3R),
    QEL_DECODER(1, 1, true, kBgr, YCbCr444ToBGRLS_MCU_16s8u_P3C3R),
    QEL_DECODER(2, 1, true, kBgr, YCbCr422ToBGRLS_MCU_16s8u_P3C3R),
    QEL_DECODER(2, 2, true, kBgr, YCbCr411ToBGRLS_MCU_16s8u_P3C3R),
    QEL_DECODER(1, 1, true, kBgr555, YCbCr444ToBGR555LS_MCU_16s16u_P3C3R),
    QEL_DECODER(2, 1, true, kBgr555, YCbCr422ToBGR555LS_MCU_16s16u_P3C3R),
    QEL_DECODER(2, 2, true, kBgr555, YCbCr411ToBGR555LS_MCU_16s16u_P3C3R),
    QEL_DECODER(1, 1, true, kBgr565, YCbCr444ToBGR565LS_MCU_16s16u_P3C3R),
    QEL_DECODER(2, 1, true, kBgr565, YCbCr422ToBGR565LS_MCU_16s16u_P3C3R),
    QEL_DECODER(2, 2, true, kBgr565, YCbCr411ToBGR565LS_MCU_16s16u_P3C3R),
    QEL_DECODER(1, 1, true, kInks, YCCK444ToCMYKLS_MCU_16s8u_P4C4R),
    QEL_DECODER(2, 1, true, kInks, YCCK422ToCMYKLS_MCU_16s8u_P4C4R),
    QEL_DECODER(2, 2, true, kInks, YCCK411ToCMYKLS_MCU_16s8u_P4C4R),
    QEL_DECODER(1, 1, false, kRgb, SampleUp444LS_MCU_16s8u_P3C3R),
    QEL_DECODER(2, 1, false, kRgb, SampleUp422LS_MCU_16s8u_P3C3R),
    QEL_DECODER(2, 2, false, kRgb, SampleUp411LS_MCU_16s8u_P3C3R),
    QEL_DECODER(2, 1, false, kPairs, Join422LS_MCU_16s8u_P3C2R),
};
const std::vector<Member<Encode>> kEncoders = {
    QEL_ENCODER(1, 1, true, kRgb, RGBToYCbCr444LS_MCU_8u16s_C3P3R),
    QEL_ENCODER(2, 1, true, kRgb, RGBToYCbCr422LS_MCU_8u16s_C3P3R),
    QEL_ENCODER(2, 2, true, kRgb, RGBToYCbCr411LS_MCU_8u16s_C3P3R),
    QEL_ENCODER(1, 1, true, kBgr, BGRToYCbCr444LS_MCU_8u16s_C3P3R),
    QEL_ENCODER(2, 1, true, kBgr, BGRToYCbCr422LS_MCU_8u16s_C3P3R),
    QEL_ENCODER(2, 2, true, kBgr, BGRToYCbCr411LS_MCU_8u16s_C3P3R),
    QEL_ENCODER(1, 1, true, kBgr555, BGR555ToYCbCr444LS_MCU_16u16s_C3P3R),
    QEL_ENCODER(2, 1, true, kBgr555, BGR555ToYCbCr422LS_MCU_16u16s_C3P3R),
    QEL_ENCODER(2, 2, true, kBgr555, BGR555ToYCbCr411LS_MCU_16u16s_C3P3R),
    QEL_ENCODER(1, 1, true, kBgr565, BGR565ToYCbCr444LS_MCU_16u16s_C3P3R),
    QEL_ENCODER(2, 1, true, kBgr565, BGR565ToYCbCr422LS_MCU_16u16s_C3P3R),
    QEL_ENCODER(2, 2, true, kBgr565, BGR565ToYCbCr411LS_MCU_16u16s_C3P3R),
    QEL_ENCODER(1, 1, true, kInks, CMYKToYCCK444LS_MCU_8u16s_C4P4R),
    QEL_ENCODER(2, 1, true, kInks, CMYKToYCCK422LS_MCU_8u16s_C4P4R),
    QEL_ENCODER(2, 2, true, kInks, CMYKToYCCK411LS_MCU_8u16s_C4P4R),
    QEL_ENCODER(1, 1, false, kRgb, SampleDown444LS_MCU_8u16s_C3P3R),
    QEL_ENCODER(2, 1, false, kRgb, SampleDown422LS_MCU_8u16s_C3P3R),
    QEL_ENCODER(2, 2, false, kRgb, SampleDown411LS_MCU_8u16s_C3P3R),
    QEL_ENCODER(2, 1, false, kPairs, Split422LS_MCU_8u16s_C2P3R),
};

// Blocks and a tile off their alignment by some bytes, with rows apart, guarded.
struct Mcu {
    int columns, rows, step;
    Guarded<int16_t> luma, cb, cr, k;
    Guarded<uint8_t> tile;
    int16_t* blocks[4] = {luma.data(), cb.data(), cr.data(), k.data()};

    Mcu(int h, int v, int bytes, int extra, size_t offset)
        : columns(8 * h), rows(8 * v), step(columns * bytes + extra), luma(64 * h * v, Fault::after, offset),
          cb(64, Fault::after, offset), cr(64, Fault::after, offset), k(64 * h * v, Fault::after, offset),
          tile(size_t(step) * (rows - 1) + columns * bytes, Fault::after, offset)
    {}
    bool intact() const { return luma.intact() && cb.intact() && cr.intact() && k.intact() && tile.intact(); }

    int lumaAt(int x, int y) const { return 64 * (y / 8 * (columns / 8) + x / 8) + 8 * (y % 8) + x % 8; }
    int chromaAt(int x, int y) const { return 8 * (y * 8 / rows) + x * 8 / columns; }
    int sample(int component, int at) const
    {
        int16_t value;
        memcpy(&value, blocks[component] + at, sizeof value);
        return value;
    }
};

// run(mcu, random, narrow) for both alignments, steps and kinds of samples.
template <class Function, class Run> void everyMcu(const Member<Function>& m, Run run)
{
    Random random(1);
    for (int round = 0; round < 300; ++round) {
        Mcu mcu(m.h, m.v, m.format.bytes, round % 3, round % 5);
        run(mcu, random, round % 2 == 0);
        ASSERT_TRUE(mcu.intact()) << m.name;
        if (testing::Test::HasFailure()) return;
    }
}

void fillBlocks(Mcu& mcu, Random& random, bool narrow)
{
    for (auto* block : {&mcu.luma, &mcu.cb, &mcu.cr, &mcu.k})
        for (size_t i = 0; i < block->size(); ++i) {
            auto value = int16_t(random.between(-300, 300));
            if (!narrow) random.fill(&value, 1);
            memcpy(block->data() + i, &value, sizeof value);
        }
}

TEST(Mcu, Decoders)
{
    for (auto& m : kDecoders)
        everyMcu(m, [&](Mcu& mcu, Random& random, bool narrow) {
            fillBlocks(mcu, random, narrow);
            random.fill(mcu.tile.data(), mcu.tile.size());
            std::vector<uint8_t> expected(mcu.tile.data(), mcu.tile.data() + mcu.tile.size());
            for (int y = 0; y < mcu.rows; ++y)
                for (int x = 0; x < mcu.columns; ++x) {
                    int l = mcu.lumaAt(x, y), c = mcu.chromaAt(x, y);
                    auto pixel =
                        decoded(m.colours, mcu.sample(0, l), mcu.sample(1, c), mcu.sample(2, c), mcu.sample(3, l));
                    uint8_t* row = expected.data() + y * mcu.step;
                    m.format.put(&row, x, pixel);
                }
            auto& function = narrow ? m.internal : m.function;
            ASSERT_EQ(function(mcu.blocks, mcu.tile.data(), mcu.step), qelStsNoErr);
            ASSERT_EQ(memcmp(mcu.tile.data(), expected.data(), expected.size()), 0) << m.name;
        });
}

TEST(Mcu, Encoders)
{
    for (auto& m : kEncoders)
        everyMcu(m, [&](Mcu& mcu, Random& random, bool narrow) {
            random.fill(mcu.tile.data(), mcu.tile.size());
            auto& function = narrow ? m.internal : m.function;
            ASSERT_EQ(function(mcu.tile.data(), mcu.step, mcu.blocks), qelStsNoErr);
            int sums[2][64] = {};
            for (int y = 0; y < mcu.rows; ++y)
                for (int x = 0; x < mcu.columns; ++x) {
                    const uint8_t* row = mcu.tile.data() + y * mcu.step;
                    auto pixel = encoded(m.colours, m.format.get(&row, x));
                    int at = mcu.lumaAt(x, y), chroma = mcu.chromaAt(x, y);
                    ASSERT_EQ(mcu.sample(0, at), pixel.a - 128) << m.name << ' ' << x << ',' << y;
                    ASSERT_TRUE(!m.hasK() || mcu.sample(3, at) == pixel.k - 128) << m.name << ' ' << x << ',' << y;
                    sums[0][chroma] += pixel.b, sums[1][chroma] += pixel.c;
                }
            int count = m.h * m.v;
            for (int i = 0; i < 128; ++i)
                ASSERT_EQ(mcu.sample(1 + i / 64, i % 64), (sums[i / 64][i % 64] - 128 * count) >> (m.h + m.v - 2))
                    << m.name << ' ' << i;
        });
}

TEST(Mcu, Faults)
{
    int16_t block[256] = {};
    uint8_t tile[1024] = {7};
    for (auto& m : kDecoders) {
        SCOPED_TRACE(m.name);
        std::vector<const int16_t*> blocks(m.hasK() ? 4 : 3, block);
        expectFaults(m.function, {blocks.data(), tile, 64}, null<0>, nullAmong<0>(blocks), null<1>, step<2>);
        EXPECT_EQ(tile[0], 7);
    }
    for (auto& m : kEncoders) {
        SCOPED_TRACE(m.name);
        std::vector<int16_t*> blocks(m.hasK() ? 4 : 3, block);
        expectFaults(m.function, {tile, 64, blocks.data()}, null<2>, nullAmong<2>(blocks), null<0>, step<1>);
        EXPECT_EQ(block[0], 0);
    }
}

}
