// SPDX-License-Identifier: Apache-2.0
// Level shift kernels: every build equals the scalar one.
#include "jpeg/block/level_shift.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

TEST(LevelShiftKernels, Rows)
{
    everyRowEqualsScalar<LevelShiftKernels>(
        [](size_t n) {
            return std::vector{room<uint8_t>(n), room<int16_t>(n), room<int16_t>(n),
                               room<int16_t>(n), room<uint8_t>(n), room<uint8_t>(n)};
        },
        [](auto& table, Rooms& r, int n) {
            table.sub128(r[0], r[1], n);
            table.sub128.streamed(r[0], r[2], n);
            table.add128(r[3], r[4], n);
            table.add128.streamed(r[3], r[5], n);
        });
}

TEST(LevelShiftKernels, Blocks)
{
    everyBuild<LevelShiftKernels>([](const LevelShiftKernels& table) {
        Random random(2);
        for (int step : {8, 9, 24}) {
            const std::vector<Room> rooms = {room<uint8_t>(size_t(7 * step + 8)), room<int16_t>(64), room<int16_t>(64)};
            auto rows = [=](Rooms& r) {
                for (int i = 0; i < 8; ++i) {
                    LevelShiftKernels::scalar.sub128(r[0] + size_t(i * step), r[1] + size_t(16 * i), 8);
                    LevelShiftKernels::scalar.add128(r[2] + size_t(16 * i), r[0] + size_t(i * step), 8);
                }
            };
            expectSame(
                random, rooms, Fault::after, 1,
                [&](Rooms& r) { table.sub128Block(r[0], step, r[1]), table.add128Block(r[2], r[0], step); }, rows);
        }
    });
}

}
