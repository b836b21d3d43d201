// Quantization kernels: every build, the scalar one too, equals the steps one value at a time.
#include "jpeg/quantization.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

int16_t quantized(int16_t c, uint16_t entry)
{
    int16_t a = int16_t(uint32_t(c) * 8);
    int product = (a * (entry >> 1)) >> 16;
    return int16_t((product + 1) >> 1);
}

void check(const QuantizationKernels& kernels)
{
    Random random(7);
    Guarded<int16_t> src(64, Fault::behind, 1), dst(64, Fault::before, 1);
    Guarded<uint16_t> table(64, Fault::behind, 3);
    int16_t block[64], out[64];
    uint16_t entries[64];
    for (int round = 0; round < 2000; ++round) {
        random.fill(block, 64);
        random.fill(entries, 64);
        if (round % 2)
            for (auto& value : block) value = int16_t(value % 4096);
        memcpy(src.data(), block, sizeof block);
        memcpy(table.data(), entries, sizeof entries);
        kernels.forward(src.data(), dst.data(), table.data());
        memcpy(out, dst.data(), sizeof out);
        for (int i = 0; i < 64; ++i) ASSERT_EQ(out[i], quantized(block[i], entries[i])) << i;
        kernels.inverse(src.data(), dst.data(), table.data());
        memcpy(out, dst.data(), sizeof out);
        for (int i = 0; i < 64; ++i) ASSERT_EQ(out[i], int16_t(uint32_t(block[i]) * entries[i])) << i;
        ASSERT_TRUE(src.intact() && dst.intact());
    }
}

TEST(QuantizationKernels, BothWays)
{
    check(QuantizationKernels::scalar);
    everyBuild<QuantizationKernels>(check);
}

}
