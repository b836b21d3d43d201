// SPDX-License-Identifier: Apache-2.0
// Support kernels: every build equals the scalar one, and the scaled product the exact rational result.
#include "core/support.h"

#include <algorithm>
#include <cmath>

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

TEST(SupportKernels, Copies)
{
    everyRowEqualsScalar<SupportKernels>(
        [](size_t n) {
            return std::vector{room<uint8_t>(n),  room<uint8_t>(n), room<uint16_t>(n),
                               room<uint16_t>(n), room<int32_t>(n), room<int32_t>(n)};
        },
        [](auto& table, Rooms& r, int n) {
            table.copy.streamed(r[0], r[1], n);
            table.convert8u16u(r[0], r[2], n);
            table.convert8u16u.streamed(r[0], r[3], n);
            table.and32s(r[4], 0x7FFF00FF, r[5], n);
        });
}

TEST(SupportKernels, ScaledProducts)
{
    for (int scale : {0, 1, 15, 16, 30, 31})
        everyRowEqualsScalar<SupportKernels>(
            [](size_t n) {
                return std::vector{room<uint16_t>(n), room<int16_t>(n), room<int16_t>(n)};
            },
            [&](auto& table, Rooms& r, int n) { table.mulScaled(r[0], r[1], r[2], n, scale); });
}

// Ties to even at the exact quotient: every source value with entries that give ties, extremes and saturation.
TEST(SupportKernels, ScaledProductIsExact)
{
    for (int scale : {0, 1, 15, 30, 31})
        for (int entry : {1, 2, 3, 2048, 10923, 16384, 32767, 32768, 49152, 65535})
            for (int value = -32768; value <= 32767; ++value) {
                auto in = int16_t(value);
                auto factor = uint16_t(entry);
                int16_t out;
                SupportKernels::scalar.mulScaled(&factor, &in, &out, 1, scale);
                double quotient = std::nearbyint(std::ldexp(double(entry) * value, -scale));
                ASSERT_EQ(out, std::clamp(quotient, -32768.0, 32767.0)) << entry << " x " << value << ", " << scale;
            }
}

}
