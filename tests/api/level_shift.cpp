// SPDX-License-Identifier: Apache-2.0
// Level shift: every value, in regions; order of faults.
#include <algorithm>

#include "argument_faults.h"
#include "regions.h"

using namespace qel::test;

namespace {

TEST(LevelShift, EveryValueInRegions)
{
    expectRegions<uint8_t, int16_t>(qeliSub128_JPEG_8u16s_C1R, [](uint8_t v) { return int16_t(v - 128); });
    expectRegions<int16_t, uint8_t>(qeliAdd128_JPEG_16s8u_C1R,
                                    [](int16_t v) { return uint8_t(std::clamp(v + 128, 0, 255)); });
}

TEST(LevelShift, OrderOfFaults)
{
    uint8_t samples[4] = {9, 9, 9, 9};
    int16_t values[4] = {7, 7, 7, 7};
    expectFaults(qeliSub128_JPEG_8u16s_C1R, {samples, 1, values, 1, {1, 1}}, null<0>, null<2>, step<1>, step<3>,
                 size<4>);
    // Argument by argument: the source step is looked at before the destination.
    expectFaults(qeliAdd128_JPEG_16s8u_C1R, {values, 1, samples, 1, {1, 1}}, null<0>, step<1>, null<2>, step<3>,
                 size<4>);
    EXPECT_EQ(samples[0], 9);
    EXPECT_EQ(values[0], 7);
}

}
