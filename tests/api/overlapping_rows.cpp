// Destinations whose rows overlap, as any step below a row's bytes makes them: always as if the rows were written one
// after the other, whatever registers, strips and pairs of rows the functions work in.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "qeljx.h"
#include "random.h"

namespace {

// Too small for threads, and wider than the strips that columns go in.
constexpr int kWidth = 600, kHeight = 13, kPairs = 6;
constexpr QelSize kSize = {kWidth, kHeight}, kHalves = {kWidth, kPairs};
constexpr int kSourceStep = 16 * kWidth, kMostRows = 16, kMostBytes = 4 * 4 * kWidth;

// What all functions read, at any place: no bits of it are an infinite float.
const std::vector<uint8_t>& source()
{
    static const auto bytes = [] {
        std::vector<uint8_t> random(size_t(kSourceStep) * 64);
        qel::test::Random(1).fill(random.data(), random.size());
        for (uint8_t& byte : random) byte &= 0xBF;
        return random;
    }();
    return bytes;
}
template <class T> const T* from(int rows = 8) { return (const T*)(source().data() + kSourceStep * rows); }
template <class T> struct Sources {
    const T* planes[4] = {from<T>(8), from<T>(21), from<T>(32), from<T>(43)};
};

// Where a function writes: up to four planes of `rows` rows, which share a step.
using Destination = uint8_t* const*;
struct Writer {
    std::string name;
    int planes, rows, rowBytes;
    std::function<QelStatus(Destination, int step)> write;
};

template <class T> T* as(uint8_t* p) { return (T*)p; }

// --- Writers by the shape of their arguments.

template <class S, class D>
Writer toPixels(const char* name, int channels, QelStatus (*f)(const S* const*, int, D*, int, QelSize))
{
    return {name, 1, kHeight, kWidth * channels * int(sizeof(D)),
            [=](Destination dst, int step) { return f(Sources<S>().planes, kSourceStep, as<D>(dst[0]), step, kSize); }};
}
template <class S, class D>
Writer toPlanes(const char* name, int planes, QelStatus (*f)(const S*, int, D* const*, int, QelSize))
{
    return {name, planes, kHeight, kWidth * int(sizeof(D)),
            [=](Destination dst, int step) { return f(from<S>(), kSourceStep, (D* const*)dst, step, kSize); }};
}
Writer planesToPlanes(const char* name, int planes,
                      QelStatus (*f)(const uint8_t* const*, int, uint8_t* const*, int, QelSize))
{
    return {name, planes, kHeight, kWidth,
            [=](Destination dst, int step) { return f(Sources<uint8_t>().planes, kSourceStep, dst, step, kSize); }};
}
template <class S, class D> Writer region(const char* name, QelStatus (*f)(const S*, int, D*, int, QelSize))
{
    return {name, 1, kHeight, kWidth * int(sizeof(D)),
            [=](Destination dst, int step) { return f(from<S>(), kSourceStep, as<D>(dst[0]), step, kSize); }};
}
Writer sampling(const char* name, QelStatus (*f)(const uint8_t*, int, QelSize, uint8_t*, int, QelSize))
{
    return {name, 1, kHeight, kWidth,
            [=](Destination dst, int step) { return f(from<uint8_t>(), kSourceStep, kSize, dst[0], step, kSize); }};
}
template <class D>
Writer mcu(const char* name, int columns, int rows, int bytes, QelStatus (*f)(const int16_t* const*, D*, int))
{
    return {name, 1, rows, columns * bytes,
            [=](Destination dst, int step) { return f(Sources<int16_t>().planes, as<D>(dst[0]), step); }};
}
// Rows and columns of wavelets: a half has kPairs pairs.
template <class T>
Writer forwardLines(const char* name, QelStatus (*f)(const T*, int, T*, int, T*, int, QelSize, int), int phase)
{
    return {name, 2, kPairs, kWidth * int(sizeof(T)), [=](Destination dst, int step) {
                return f(from<T>(), kSourceStep, as<T>(dst[0]), step, as<T>(dst[1]), step, kHalves, phase);
            }};
}
template <class T> Writer inverseLines(const char* name, bool columns,
                                       QelStatus (*f)(const T*, int, const T*, int, QelSize, T*, int, int), int phase)
{
    return {name, 1, columns ? 2 * kPairs : kPairs, (columns ? 1 : 2) * kWidth * int(sizeof(T)),
            [=](Destination dst, int step) {
                return f(from<T>(), kSourceStep, from<T>(32), kSourceStep, kHalves, as<T>(dst[0]), step, phase);
            }};
}
// Tiles, of which the flattest have lines of two samples.
template <class T> Writer forwardTile(const char* name, int rows,
                                      QelStatus (*f)(const T*, int, const QelRect*, T* const*, const int*, uint8_t*))
{
    return {name, 4, rows / 2, kWidth / 2 * int(sizeof(T)), [=](Destination dst, int step) {
                QelRect tile = {0, 1, kWidth, rows};
                const int steps[] = {step, step, step, step};
                std::vector<uint8_t> buffer(100000);
                return f(from<T>(), kSourceStep, &tile, (T* const*)dst, steps, buffer.data());
            }};
}
template <class T> Writer inverseTile(const char* name, int rows,
                                      QelStatus (*f)(const T* const*, const int*, const QelRect*, T*, int, uint8_t*))
{
    return {name, 1, rows, kWidth * int(sizeof(T)), [=](Destination dst, int step) {
                QelRect tile = {0, 1, kWidth, rows};
                const int steps[] = {kSourceStep, kSourceStep, kSourceStep, kSourceStep};
                std::vector<uint8_t> buffer(100000);
                return f(Sources<T>().planes, steps, &tile, as<T>(dst[0]), step, buffer.data());
            }};
}

#define QEL_WRITER(SHAPE, NAME, ...) SHAPE(#NAME, __VA_ARGS__, NAME)
#define QEL_REGION(NAME) region(#NAME, NAME)
#define QEL_MCU(FORMAT, PIXELS, BYTES)                                                                                 \
    mcu("444 to " #PIXELS, 8, 8, BYTES, qeli##FORMAT##444##PIXELS),                                                    \
        mcu("422 to " #PIXELS, 16, 8, BYTES, qeli##FORMAT##422##PIXELS),                                               \
        mcu("411 to " #PIXELS, 16, 16, BYTES, qeli##FORMAT##411##PIXELS)

std::vector<Writer> writers()
{
    const uint16_t* table = from<uint16_t>(3);
    std::vector<Writer> all = {
        QEL_MCU(YCbCr, ToRGBLS_MCU_16s8u_P3C3R, 3),
        QEL_MCU(YCbCr, ToBGRLS_MCU_16s8u_P3C3R, 3),
        QEL_MCU(YCbCr, ToBGR555LS_MCU_16s16u_P3C3R, 2),
        QEL_MCU(YCbCr, ToBGR565LS_MCU_16s16u_P3C3R, 2),
        QEL_MCU(YCCK, ToCMYKLS_MCU_16s8u_P4C4R, 4),
        QEL_MCU(SampleUp, LS_MCU_16s8u_P3C3R, 3),
        mcu("Join422", 16, 8, 2, qeliJoin422LS_MCU_16s8u_P3C2R),
        {"DCT", 1, 8, 8,
         [=](Destination dst, int step) {
             return qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R(from<int16_t>(), dst[0], step, table);
         }},
        {"DCT, clamped", 1, 8, 8,
         [](Destination dst, int step) {
             return qeliDCT8x8InvLSClip_16s8u_C1R(from<int16_t>(), dst[0], step, 100, 16, 235);
         }},
        sampling("DownH2V1", qeliSampleDownH2V1_JPEG_8u_C1R),
        sampling("DownH2V2", qeliSampleDownH2V2_JPEG_8u_C1R),
        sampling("UpH2V1", qeliSampleUpH2V1_JPEG_8u_C1R),
        sampling("UpH2V2", qeliSampleUpH2V2_JPEG_8u_C1R),
        QEL_REGION(qeliSub128_JPEG_8u16s_C1R),
        QEL_REGION(qeliAdd128_JPEG_16s8u_C1R),
        QEL_REGION(qeliConvert_8u16u_C1R),
        QEL_REGION(qeliCopy_16s_C1R),
        QEL_REGION(qeliCopy_32f_C1R),
        {"AndC", 1, kHeight, 4 * kWidth,
         [](Destination dst, int step) {
             return qeliAndC_32s_C1R(from<int32_t>(), kSourceStep, 0xFF00FF, as<int32_t>(dst[0]), step, kSize);
         }},
        QEL_WRITER(toPixels, qeliYCbCrToRGB_JPEG_8u_P3C3R, 3),
        QEL_WRITER(toPixels, qeliYCbCrToBGR565_JPEG_8u16u_P3C3R, 1),
        QEL_WRITER(toPixels, qeliYCCKToCMYK_JPEG_8u_P4C4R, 4),
        QEL_WRITER(planesToPlanes, qeliYCbCrToRGB_JPEG_8u_P3R, 3),
        QEL_WRITER(toPlanes, qeliRGBToYCbCr_JPEG_8u_C3P3R, 3),
        QEL_WRITER(toPlanes, qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R, 3),
        QEL_WRITER(toPlanes, qeliCMYKToYCCK_JPEG_8u_C4P4R, 4),
        QEL_REGION(qeliRGBToY_JPEG_8u_C3C1R),
        QEL_WRITER(toPlanes, qeliRCTFwd_JPEG2K_32s_C3P3R, 3),
        QEL_WRITER(toPixels, qeliICTInv_JPEG2K_32f_P3C3R, 3),
        {"RowInv", 1, kPairs, 4 * kWidth,
         [](Destination dst, int step) {
             return qeliWTInvRow_D97_JPEG2K_32f_C1R(from<float>(), kSourceStep, from<float>(32), kSourceStep,
                                                    {kWidth / 2, kPairs}, as<float>(dst[0]), step, 1);
         }},
    };
    for (int phase = 0; phase < 2; ++phase) {
        all.push_back(forwardLines("ColFwd 16s", qeliWTFwdCol_B53_JPEG2K_16s_C1R, phase));
        all.push_back(forwardLines("ColFwd 32f", qeliWTFwdCol_D97_JPEG2K_32f_C1R, phase));
        all.push_back(forwardLines("RowFwd 16s", qeliWTFwdRow_B53_JPEG2K_16s_C1R, phase));
        all.push_back(inverseLines("ColInv 16s", true, qeliWTInvCol_B53_JPEG2K_16s_C1R, phase));
        all.push_back(inverseLines("ColInv 32f", true, qeliWTInvCol_D97_JPEG2K_32f_C1R, phase));
        all.push_back(inverseLines("RowInv 32s", false, qeliWTInvRow_B53_JPEG2K_32s_C1R, phase));
    }
    for (int rows : {2, 12}) {
        all.push_back(forwardTile("Fwd 16s", rows, qeliWTFwd_B53_JPEG2K_16s_C1R));
        all.push_back(inverseTile("Inv 16s", rows, qeliWTInv_B53_JPEG2K_16s_C1R));
        all.push_back(inverseTile("Inv 32s", rows, qeliWTInv_D97_JPEG2K_32s_C1R));
    }
    return all;
}

// The planes that a function writes with this step.
std::vector<uint8_t> written(const Writer& writer, int step)
{
    constexpr size_t kPlane = size_t(kMostRows) * (kMostBytes + 64);
    std::vector<uint8_t> memory(4 * kPlane, 0x5A);
    uint8_t* const planes[] = {memory.data(), &memory[kPlane], &memory[2 * kPlane], &memory[3 * kPlane]};
    EXPECT_EQ(writer.write(planes, step), qelStsNoErr) << writer.name;
    return memory;
}

TEST(OverlappingRows, AreWrittenFromTopToBottom)
{
    for (const Writer& writer : writers()) {
        const int wide = writer.rowBytes + 40;
        const std::vector<uint8_t> apart = written(writer, wide), untouched(apart.size(), 0x5A);
        const size_t plane = apart.size() / 4;
        bool isRight = true;
        for (int step : {1,  2,  3,  4,  5,  7,  8,   9,   15,  16,  17,   23,   24,   31,   32,  33,
                         40, 47, 48, 63, 64, 65, 127, 300, 599, 600, 1100, 1199, 1500, 2048, 2399}) {
            if (step >= writer.rowBytes || !isRight) break;
            std::vector<uint8_t> expected = untouched;
            for (size_t p = 0; p < size_t(writer.planes); ++p)
                for (int r = 0; r < writer.rows; ++r)
                    std::copy_n(&apart[p * plane + size_t(r * wide)], writer.rowBytes,
                                &expected[p * plane + size_t(r * step)]);
            isRight = written(writer, step) == expected;
            EXPECT_TRUE(isRight) << writer.name << ", step " << step;
        }
    }
}

}
