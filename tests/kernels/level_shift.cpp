// Level shift kernels: every build equals the scalar one.
#include "jpeg/level_shift.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// One row kernel over random data at both ends of a faulting page and at odd addresses.
template <class Src, class Dst, class Kernel>
void rows(Kernel LevelShiftKernels::*kernel, Kernel LevelShiftKernels::*plain)
{
    everyBuild<LevelShiftKernels>([&](const LevelShiftKernels& table) {
        Random random(1);
        everyLength([&](int len) {
            for (size_t offset : {0, 1, 3}) {
                Guarded<Src> src(len, Fault::behind, offset);
                Guarded<Dst> dst(len, Fault::behind, offset), expected(len);
                random.fill(src.data(), len);
                (table.*kernel)(src.data(), dst.data(), len);
                (LevelShiftKernels::scalar.*plain)(src.data(), expected.data(), len);
                ASSERT_EQ(memcmp(dst.data(), expected.data(), dst.sizeInBytes()), 0) << len << " at " << offset;
                ASSERT_TRUE(dst.intact()) << len << " at " << offset;
            }
        });
    });
}

TEST(LevelShiftKernels, Rows)
{
    using Table = LevelShiftKernels;
    rows<uint8_t, int16_t>(&Table::sub128, &Table::sub128);
    rows<int16_t, uint8_t>(&Table::add128, &Table::add128);
    rows<uint8_t, int16_t>(&Table::sub128Past, &Table::sub128);
    rows<int16_t, uint8_t>(&Table::add128Past, &Table::add128);
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
