// SPDX-License-Identifier: Apache-2.0
// Every register operation that computes, of every build, equals its definition in PortableSimd.
#include "simd/operations.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

TEST(Simd, OperationsEqualTheirDefinitions)
{
    everyBuild<SimdOperations>([](const SimdOperations& operations) {
        Random random(1);
        for (int i = 0; i < operations.count; ++i) {
            const SimdOperation& operation = operations.list[i];
            Guarded<uint8_t> out(operation.outputBytes), expected(operation.outputBytes);
            for (int round = 0; round < 200; ++round) {
                // Other offsets than 0 try unaligned loads.
                Guarded<uint8_t> in(operation.inputBytes, Fault::after, round % 3);
                random.fill(in.data(), in.size());
                operation.run(in.data(), out.data());
                operation.define(in.data(), expected.data());
                ASSERT_EQ(memcmp(out.data(), expected.data(), out.size()), 0) << operation.name;
            }
            ASSERT_TRUE(out.intact()) << operation.name;
        }
    });
}

}
