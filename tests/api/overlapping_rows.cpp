// SPDX-License-Identifier: Apache-2.0
// Destinations whose rows overlap, as any step below a row's bytes makes them: always as if the rows were written one
// after the other, whatever registers, strips and pairs of rows the functions work in.
#include <gtest/gtest.h>

#include <vector>

#include "qeljx.h"
#include "random.h"

namespace {

// Too small for threads, and wider than the strips that columns go in. Halves of lines have kPairs rows or columns.
constexpr int kWidth = 600, kHeight = 13, kPairs = 6, kFrom = 16 * kWidth;
constexpr QelSize kSize = {kWidth, kHeight}, kRows = {kWidth / 2, kPairs}, kColumns = {kWidth, kPairs};
constexpr size_t kPlane = 16 * (16 * kWidth + 64);

// An address or four planes, as what a function takes there.
struct Place {
    uint8_t* p;
    template <class T> operator T*() const { return (T*)p; }
};
struct Planes {
    uint8_t* p[4];
    Place operator[](int i) const { return {p[i]}; }
    template <class T> operator T* const*() const { return (T* const*)p; }
};

// What all functions read: no bits of it are an infinite float.
const Planes& source()
{
    static auto bytes = [] {
        std::vector<uint8_t> random(size_t(kFrom) * 64);
        qel::test::Random(1).fill(random.data(), random.size());
        for (uint8_t& byte : random) byte &= 0xBF;
        return random;
    }();
    static const Planes planes = {&bytes[8 * kFrom], &bytes[21 * kFrom], &bytes[32 * kFrom], &bytes[43 * kFrom]};
    return planes;
}

struct Writer {
    const char* name;
    int planes, rows, rowBytes;
    QelStatus (*write)(const Planes& from, const Planes& to, int step);
};
#define QEL_WRITER(PLANES, ROWS, BYTES, NAME, ...)                                                                     \
    Writer                                                                                                             \
    {                                                                                                                  \
#NAME, PLANES, ROWS, BYTES, [](const Planes& from, const Planes& to, int step) { return NAME(__VA_ARGS__); }   \
    }
#define QEL_MCU(COLUMNS, ROWS, BYTES, NAME) QEL_WRITER(1, ROWS, COLUMNS* BYTES, NAME, from, to[0], step)
#define QEL_SAMPLING(NAME) QEL_WRITER(1, kHeight, kWidth, NAME, from[0], kFrom, kSize, to[0], step, kSize)
#define QEL_REGION(BYTES, NAME) QEL_WRITER(1, kHeight, kWidth* BYTES, NAME, from[0], kFrom, to[0], step, kSize)
#define QEL_FORWARD(SIZE, BYTES, NAME)                                                                                 \
    QEL_WRITER(2, kPairs, SIZE.width* BYTES, NAME, from[0], kFrom, to[0], step, to[1], step, SIZE, 1)
#define QEL_INVERSE(SIZE, ROWS, BYTES, NAME)                                                                           \
    QEL_WRITER(1, ROWS, kWidth* BYTES, NAME, from[0], kFrom, from[2], kFrom, SIZE, to[0], step, 1)

// Tiles to and from subbands, the flattest with lines of two samples.
uint8_t buffer[100000];
template <auto kTransform, int kTileRows> QelStatus tileToBands(const Planes& from, const Planes& to, int step)
{
    const QelRect tile = {0, 1, kWidth, kTileRows};
    const int steps[] = {step, step, step, step};
    return kTransform(from[0], kFrom, &tile, to, steps, buffer);
}
template <auto kTransform, int kTileRows> QelStatus bandsToTile(const Planes& from, const Planes& to, int step)
{
    const QelRect tile = {0, 1, kWidth, kTileRows};
    const int steps[] = {kFrom, kFrom, kFrom, kFrom};
    return kTransform(from, steps, &tile, to[0], step, buffer);
}

const Writer kWriters[] = {
    QEL_MCU(8, 8, 3, qeliYCbCr444ToRGBLS_MCU_16s8u_P3C3R),
    QEL_MCU(16, 8, 3, qeliYCbCr422ToRGBLS_MCU_16s8u_P3C3R),
    QEL_MCU(16, 16, 3, qeliYCbCr411ToRGBLS_MCU_16s8u_P3C3R),
    QEL_MCU(8, 8, 2, qeliYCbCr444ToBGR555LS_MCU_16s16u_P3C3R),
    QEL_MCU(16, 16, 2, qeliYCbCr411ToBGR565LS_MCU_16s16u_P3C3R),
    QEL_MCU(8, 8, 4, qeliYCCK444ToCMYKLS_MCU_16s8u_P4C4R),
    QEL_MCU(16, 16, 4, qeliYCCK411ToCMYKLS_MCU_16s8u_P4C4R),
    QEL_MCU(16, 8, 2, qeliJoin422LS_MCU_16s8u_P3C2R),
    QEL_WRITER(1, 8, 8, qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R, from[0], to[0], step, from[1]),
    QEL_WRITER(1, 8, 8, qeliDCT8x8InvLSClip_16s8u_C1R, from[0], to[0], step, 100, 16, 235),
    QEL_SAMPLING(qeliSampleDownH2V1_JPEG_8u_C1R),
    QEL_SAMPLING(qeliSampleDownH2V2_JPEG_8u_C1R),
    QEL_SAMPLING(qeliSampleUpH2V1_JPEG_8u_C1R),
    QEL_SAMPLING(qeliSampleUpH2V2_JPEG_8u_C1R),
    QEL_REGION(2, qeliSub128_JPEG_8u16s_C1R),
    QEL_REGION(1, qeliAdd128_JPEG_16s8u_C1R),
    QEL_REGION(4, qeliCopy_32f_C1R),
    QEL_WRITER(1, kHeight, 4 * kWidth, qeliAndC_32s_C1R, from[0], kFrom, 0xFF00FF, to[0], step, kSize),
    QEL_WRITER(1, kHeight, 3 * kWidth, qeliYCbCrToRGB_JPEG_8u_P3C3R, from, kFrom, to[0], step, kSize),
    QEL_WRITER(3, kHeight, kWidth, qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R, from[0], kFrom, to, step, kSize),
    QEL_WRITER(1, kHeight, 12 * kWidth, qeliICTInv_JPEG2K_32f_P3C3R, from, kFrom, to[0], step, kSize),
    QEL_FORWARD(kRows, 2, qeliWTFwdRow_B53_JPEG2K_16s_C1R),
    QEL_FORWARD(kColumns, 2, qeliWTFwdCol_B53_JPEG2K_16s_C1R),
    QEL_FORWARD(kColumns, 4, qeliWTFwdCol_D97_JPEG2K_32f_C1R),
    QEL_INVERSE(kRows, kPairs, 4, qeliWTInvRow_D97_JPEG2K_32f_C1R),
    QEL_INVERSE(kColumns, 2 * kPairs, 2, qeliWTInvCol_B53_JPEG2K_16s_C1R),
    QEL_INVERSE(kColumns, 2 * kPairs, 4, qeliWTInvCol_D97_JPEG2K_32f_C1R),
    {"to bands", 4, 6, kWidth, tileToBands<qeliWTFwd_B53_JPEG2K_16s_C1R, 12>},
    {"from bands", 1, 12, 4 * kWidth, bandsToTile<qeliWTInv_D97_JPEG2K_32s_C1R, 12>},
    {"from flat bands", 1, 2, 2 * kWidth, bandsToTile<qeliWTInv_B53_JPEG2K_16s_C1R, 2>},
};

std::vector<uint8_t> written(const Writer& writer, int step)
{
    std::vector<uint8_t> memory(4 * kPlane, 0x5A);
    const Planes to = {&memory[0], &memory[kPlane], &memory[2 * kPlane], &memory[3 * kPlane]};
    EXPECT_EQ(writer.write(source(), to, step), qelStsNoErr) << writer.name;
    return memory;
}

TEST(OverlappingRows, AreWrittenFromTopToBottom)
{
    for (const Writer& writer : kWriters) {
        const int wide = writer.rowBytes + 40;
        const auto apart = written(writer, wide);
        bool isRight = true;
        for (int step : {1, 2, 3, 5, 8, 9, 16, 17, 23, 31, 32, 33, 47, 63, 64, 65, 300, 599, 1100, 1199, 2048, 2399}) {
            if (step >= writer.rowBytes || !isRight) break;
            std::vector<uint8_t> expected(4 * kPlane, 0x5A);
            for (size_t p = 0; p < size_t(writer.planes); ++p)
                for (int r = 0; r < writer.rows; ++r)
                    std::copy_n(&apart[p * kPlane + size_t(r * wide)], writer.rowBytes,
                                &expected[p * kPlane + size_t(r * step)]);
            isRight = written(writer, step) == expected;
            EXPECT_TRUE(isRight) << writer.name << ", step " << step;
        }
    }
}

}
