// SPDX-License-Identifier: Apache-2.0
// MCU kernels: every build equals the scalar one, for any blocks, at any address and step.
#include "jpeg/colour/mcu.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

struct Shape {
    int columns, rows, bytesPerPixel;
};

template <class Pixel>
void run(void (*kernel)(const int16_t* const*, Pixel*, int), int16_t** blocks, Address tile, int step)
{
    kernel(blocks, tile, step);
}
template <class Pixel>
void run(void (*kernel)(const Pixel*, int, int16_t* const*), int16_t** blocks, Address tile, int step)
{
    kernel(tile, step, blocks);
}

// Samples near the range of pictures, where the rounding shows.
Room samples(size_t blocks)
{
    return {blocks * 128, [](Random& random, uint8_t* p, size_t bytes) {
                for (size_t i = 0; i < bytes; i += 2) {
                    auto value = int16_t(random.between(-300, 300));
                    memcpy(p + i, &value, sizeof value);
                }
            }};
}

// kernelOf(table) is the kernel to try.
template <class KernelOf> void equalsScalar(Shape shape, KernelOf kernelOf)
{
    const int row = shape.columns * shape.bytesPerPixel;
    const size_t tileBytes = size_t((row + 5) * (shape.rows - 1) + row), luma = size_t(shape.columns * shape.rows / 64);
    const std::pair<Fault, size_t> places[] = {{Fault::after, 0}, {Fault::after, 1}, {Fault::before, 3}};
    everyBuild<McuKernels>([&](const McuKernels& table) {
        int step = 0;
        auto runOn = [&](const McuKernels& build, Rooms& r) {
            int16_t* blocks[] = {r[1], r[2], r[3], r[4]};
            run(kernelOf(build), blocks, r[0], step);
        };
        Random random(1);
        for (int round = 0; round < 60; ++round) {
            auto some = round % 2 ? samples : room<int16_t>;
            size_t unit = round % 2 ? 1 : 64;
            auto [fault, offset] = places[round % 3];
            // Rows apart, one after another, or overlapping.
            step = round % 4 == 0 ? row + 5 : round % 4 == 1 ? row : random.between(1, row);
            expectSame(
                random, {room<uint8_t>(tileBytes), some(luma * unit), some(unit), some(unit), some(luma * unit)}, fault,
                offset, [&](Rooms& r) { runOn(table, r); }, [&](Rooms& r) { runOn(McuKernels::scalar, r); });
            ASSERT_FALSE(testing::Test::HasFailure()) << shape.columns << 'x' << shape.rows << ", round " << round;
        }
    });
}

template <class Kernel> void everySampling(BySampling<Kernel> McuKernels::*family, int bytesPerPixel)
{
    equalsScalar({8, 8, bytesPerPixel}, [=](auto& table) { return (table.*family).s444; });
    equalsScalar({16, 8, bytesPerPixel}, [=](auto& table) { return (table.*family).s422; });
    equalsScalar({16, 16, bytesPerPixel}, [=](auto& table) { return (table.*family).s411; });
}

using Table = McuKernels;

TEST(McuKernels, Decoders)
{
    everySampling(&Table::toRgb, 3);
    everySampling(&Table::toBgr, 3);
    everySampling(&Table::toBgr555, 2);
    everySampling(&Table::toBgr565, 2);
    everySampling(&Table::toCmyk, 4);
    everySampling(&Table::toYcc, 3);
    equalsScalar({16, 8, 2}, [](auto& table) { return table.toPairs422; });
}

TEST(McuKernels, Encoders)
{
    everySampling(&Table::fromRgb, 3);
    everySampling(&Table::fromBgr, 3);
    everySampling(&Table::fromBgr555, 2);
    everySampling(&Table::fromBgr565, 2);
    everySampling(&Table::fromCmyk, 4);
    everySampling(&Table::fromYcc, 3);
    equalsScalar({16, 8, 2}, [](auto& table) { return table.fromPairs422; });
}

}
