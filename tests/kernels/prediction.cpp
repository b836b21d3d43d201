// SPDX-License-Identifier: Apache-2.0
// Prediction kernels: every build equals the scalar one.
#include "jpeg/lossless/prediction.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

constexpr int kPredictors = 7;
using Kernels = PredictionRow* [kPredictors];

// Two sources, and a destination for each predictor.
void rows(const Kernels PredictionKernels::*kernels)
{
    everyRowEqualsScalar<PredictionKernels>([](size_t n) { return std::vector(2 + kPredictors, room<int16_t>(n)); },
                                            [=](auto& table, Rooms& r, int n) {
                                                for (int p = 0; p < kPredictors; ++p)
                                                    (table.*kernels)[p](r[0], r[1], r[size_t(2 + p)], n);
                                            });
}

TEST(PredictionKernels, Differences) { rows(&PredictionKernels::diff); }
TEST(PredictionKernels, Reconstruction) { rows(&PredictionKernels::reconstruct); }

// Rows that share memory at any distance, by bytes: always as if sample followed sample.
void overlaps(const Kernels PredictionKernels::*kernels)
{
    constexpr int kWidth = 150, kReach = 170;
    everyBuild<PredictionKernels>([&](const PredictionKernels& table) {
        Random random(2);
        Guarded<uint8_t> memory(2 * (kWidth + 2 * kReach)), expected(memory.size());
        Guarded<int16_t> other(kWidth);
        random.fill(other.data(), kWidth);
        auto run = [&](const PredictionKernels& build, Guarded<uint8_t>& in, int p, int distance, bool isPrev) {
            auto* fixed = (int16_t*)(in.data() + 2 * kReach);
            auto* dst = (int16_t*)(in.data() + 2 * kReach + distance);
            (build.*kernels)[p](isPrev ? other.data() : fixed, isPrev ? fixed : other.data(), dst, kWidth);
        };
        for (int distance : {-302, -299, -298, -33, -32, -16, -3, -2, -1, 0, 1, 2, 4, 15, 16, 31, 64, 298, 299, 300})
            for (int p = 0; p < kPredictors; ++p)
                for (bool isPrev : {false, true}) {
                    random.fill(memory.data(), memory.size());
                    memcpy(expected.data(), memory.data(), memory.size());
                    run(PredictionKernels::scalar, expected, p, distance, isPrev);
                    run(table, memory, p, distance, isPrev);
                    ASSERT_EQ(memcmp(memory.data(), expected.data(), memory.size()), 0) << p + 1 << ": " << distance;
                }
    });
}

TEST(PredictionKernels, DifferencesOfRowsThatOverlap) { overlaps(&PredictionKernels::diff); }
TEST(PredictionKernels, ReconstructionOfRowsThatOverlap) { overlaps(&PredictionKernels::reconstruct); }

}
