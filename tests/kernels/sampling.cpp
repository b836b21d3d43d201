// Sampling kernels: every build equals the scalar one, at any address, and touches nothing but what it may.
#include "jpeg/sampling.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// One or two source rows of random samples with `margin` samples on either side, which kernels of planes read.
class SourceRows {
public:
    SourceRows(Random& random, int width, int margin, Fault fault, size_t offset)
        : margin_(margin), first_(width + 2 * margin, fault, offset), second_(width + 2 * margin, fault, offset)
    {
        random.fill(first_.data(), first_.size());
        random.fill(second_.data(), second_.size());
    }
    const uint8_t* first() const { return first_.data() + margin_; }
    const uint8_t* second() const { return second_.data() + margin_; }

private:
    int margin_;
    Guarded<uint8_t> first_, second_;
};

// run(table, source, width, dst) is one call of a kernel; geometry(width) is {source samples, destination samples}.
struct Geometry {
    int srcWidth, dstWidth;
};
template <class GeometryOf, class Run> void equalsScalar(int margin, GeometryOf geometry, Run run)
{
    everyBuild<SamplingKernels>([&](const SamplingKernels& table) {
        Random random(1);
        everyLength([&](int width) {
            auto [srcWidth, dstWidth] = geometry(width);
            for (auto fault : {Fault::behind, Fault::before})
                for (size_t offset : {0, 1, 3}) {
                    SourceRows source(random, srcWidth, margin, fault, offset);
                    Guarded<uint8_t> dst(dstWidth, fault, offset), expected(dstWidth);
                    run(table, source, width, dst.data());
                    run(SamplingKernels::scalar, source, width, expected.data());
                    ASSERT_EQ(memcmp(dst.data(), expected.data(), dstWidth), 0) << width << " at " << offset;
                    ASSERT_TRUE(dst.intact()) << width << " at " << offset;
                }
        });
    });
}

Geometry doubled(int dstWidth) { return {2 * dstWidth, dstWidth}; }
Geometry halved(int srcWidth) { return {srcWidth, srcWidth / 2}; }

TEST(SamplingKernels, BoxPlaneRows)
{
    equalsScalar(0, doubled,
                 [](auto& table, auto& src, int width, uint8_t* dst) { table.downH2V1(src.first(), dst, width); });
    equalsScalar(0, doubled, [](auto& table, auto& src, int width, uint8_t* dst) {
        table.downH2V2(src.first(), src.second(), dst, width);
    });
}

TEST(SamplingKernels, BoxRows)
{
    equalsScalar(0, halved,
                 [](auto& table, auto& src, int width, uint8_t* dst) { table.downRowH2V1(src.first(), width, dst); });
    equalsScalar(0, halved, [](auto& table, auto& src, int width, uint8_t* dst) {
        table.downRowH2V2(src.first(), src.second(), width, dst);
    });
}

TEST(SamplingKernels, TrianglePlaneRows)
{
    // For an odd width the last destination sample belongs to the sample behind the last whole pair.
    auto geometry = [](int dstWidth) { return Geometry{dstWidth / 2, dstWidth}; };
    equalsScalar(1, geometry,
                 [](auto& table, auto& src, int width, uint8_t* dst) { table.upH2V1(src.first(), dst, width); });
    equalsScalar(1, geometry, [](auto& table, auto& src, int width, uint8_t* dst) {
        table.upH2V2(src.first(), src.second(), dst, width);
    });
    equalsScalar(1, geometry, [](auto& table, auto& src, int width, uint8_t* dst) {
        (&table == &SamplingKernels::scalar ? table.upH2V1 : table.upH2V1Past)(src.first(), dst, width);
    });
    equalsScalar(1, geometry, [](auto& table, auto& src, int width, uint8_t* dst) {
        (&table == &SamplingKernels::scalar ? table.upH2V2 : table.upH2V2Past)(src.first(), src.second(), dst, width);
    });
}

TEST(SamplingKernels, TriangleRows)
{
    auto geometry = [](int srcWidth) { return Geometry{srcWidth, 2 * srcWidth}; };
    equalsScalar(0, geometry,
                 [](auto& table, auto& src, int width, uint8_t* dst) { table.upRowH2V1(src.first(), width, dst); });
    equalsScalar(0, geometry, [](auto& table, auto& src, int width, uint8_t* dst) {
        table.upRowH2V2(src.first(), src.second(), width, dst);
    });
}

// The wide kernels round in several small steps: every pair of neighbours, in both orders, goes through them.
TEST(SamplingKernels, EveryPairOfNeighbours)
{
    constexpr int kPairs = 256;
    everyBuild<SamplingKernels>([](const SamplingKernels& table) {
        for (int a = 0; a < 256; ++a) {
            uint8_t src[2 * kPairs], up[4 * kPairs], down[kPairs];
            for (int b = 0; b < kPairs; ++b) src[2 * b] = uint8_t(a), src[2 * b + 1] = uint8_t(b);
            table.upRowH2V1(src, 2 * kPairs, up);
            table.downRowH2V1(src, 2 * kPairs, down);
            for (int i = 1; i < 2 * kPairs - 1; ++i) {
                ASSERT_EQ(up[2 * i], (3 * src[i] + src[i - 1] + 1) >> 2) << a << ' ' << i;
                ASSERT_EQ(up[2 * i + 1], (3 * src[i] + src[i + 1] + 2) >> 2) << a << ' ' << i;
            }
            for (int b = 0; b < kPairs; ++b) ASSERT_EQ(down[b], (a + b + b % 2) >> 1) << a << ' ' << b;
        }
    });
}

}
