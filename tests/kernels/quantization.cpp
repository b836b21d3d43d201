// SPDX-License-Identifier: Apache-2.0
// Quantization kernels: every build equals the scalar one, at any address.
#include "jpeg/block/quantization.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

TEST(QuantizationKernels, BothWays)
{
    everyBuild<QuantizationKernels>([](const QuantizationKernels& table) {
        auto quantize = [](const QuantizationKernels& kernels, Rooms& r) {
            kernels.forward(r[0], r[2], r[1]);
            kernels.inverse(r[0], r[3], r[1]);
        };
        Random random(7);
        for (size_t round = 0; round < 300 && !testing::Test::HasFatalFailure(); ++round)
            expectSame(
                random, std::vector(4, room<int16_t>(64)), Fault::after, round % 4,
                [&](Rooms& r) { quantize(table, r); }, [&](Rooms& r) { quantize(QuantizationKernels::scalar, r); });
    });
}

}
