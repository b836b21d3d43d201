// Level shift kernels: every build equals the scalar one.
#include "jpeg/level_shift.h"

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
            Guarded<uint8_t> samples(7 * step + 8);
            Guarded<int16_t> block(64);
            random.fill(samples.data(), samples.size());
            table.sub128Block(samples.data(), step, block.data());
            for (int i = 0; i < 64; ++i) ASSERT_EQ(block.data()[i], samples.data()[i / 8 * step + i % 8] - 128);

            random.fill(block.data(), 64);
            Guarded<uint8_t> expected(samples.size());
            memcpy(expected.data(), samples.data(), samples.size());
            for (int r = 0; r < 8; ++r)
                LevelShiftKernels::scalar.add128(block.data() + 8 * r, expected.data() + r * step, 8);
            table.add128Block(block.data(), samples.data(), step);
            ASSERT_EQ(memcmp(samples.data(), expected.data(), samples.size()), 0) << step;
            ASSERT_TRUE(samples.intact() && block.intact());
        }
    });
}

}
