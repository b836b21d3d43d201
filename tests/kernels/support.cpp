// Support kernels: every build equals the scalar one, and the scaled product the exact rational result.
#include "core/support.h"

#include <algorithm>
#include <cmath>

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// run(table, src, dst) over random data at every offset, compared with the scalar build.
template <class Src, class Dst, class Run> void equalsScalar(Run run)
{
    everyBuild<SupportKernels>([&](const SupportKernels& table) {
        Random random(1);
        everyLength([&](int len) {
            for (size_t offset : {0, 1, 2, 7}) {
                Guarded<Src> src(len, Fault::behind, offset);
                Guarded<Dst> dst(len, Fault::behind, offset), expected(len);
                random.fill(src.data(), len);
                run(table, src.data(), dst.data(), len);
                run(SupportKernels::scalar, src.data(), expected.data(), len);
                ASSERT_EQ(memcmp(dst.data(), expected.data(), dst.sizeInBytes()), 0) << len << " at " << offset;
                ASSERT_TRUE(dst.intact()) << len << " at " << offset;
            }
        });
    });
}

TEST(SupportKernels, Copies)
{
    equalsScalar<uint8_t, uint8_t>([](auto& table, auto* src, auto* dst, int len) { table.copyPast(src, dst, len); });
    equalsScalar<uint8_t, uint16_t>(
        [](auto& table, auto* src, auto* dst, int len) { table.convert8u16u(src, dst, len); });
    equalsScalar<uint8_t, uint16_t>(
        [](auto& table, auto* src, auto* dst, int len) { table.convert8u16uPast(src, dst, len); });
    equalsScalar<int32_t, int32_t>(
        [](auto& table, auto* src, auto* dst, int len) { table.and32s(src, 0x7FFF00FF, dst, len); });
}

TEST(SupportKernels, ScaledProducts)
{
    for (int scale : {1, 14, 15, 16}) {
        Random random(scale);
        Guarded<uint16_t> entries(4099);
        random.fill(entries.data(), entries.size());
        equalsScalar<int16_t, int16_t>(
            [&](auto& table, auto* src, auto* dst, int len) { table.mulScaled(entries.data(), src, dst, len, scale); });
    }
}

// Ties to even at the exact quotient: every source value with entries that give ties, extremes and saturation.
TEST(SupportKernels, ScaledProductIsExact)
{
    for (int entry : {1, 2, 3, 2048, 10923, 16384, 32767, 32768, 49152, 65535})
        for (int value = -32768; value <= 32767; ++value) {
            auto in = int16_t(value);
            auto factor = uint16_t(entry);
            int16_t out;
            SupportKernels::scalar.mulScaled(&factor, &in, &out, 1, 15);
            double quotient = std::nearbyint(double(entry) * value / 32768);
            ASSERT_EQ(out, std::clamp(quotient, -32768.0, 32767.0)) << entry << " x " << value;
        }
}

}
