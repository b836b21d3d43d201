// SPDX-License-Identifier: Apache-2.0
// Component transform kernels: every build equals the scalar one.
#include "jpeg2k/transform/component_transform.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// Pixels to planes and back, and planes in place both ways, each from data of its own.
template <class T> void rows(ComponentTransform<T> ComponentTransformKernels::*of)
{
    everyRowEqualsScalar<ComponentTransformKernels>(
        [](size_t n) {
            std::vector<Room> rooms(14, room<T>(n));
            rooms[0] = rooms[1] = room<T>(3 * n);
            return rooms;
        },
        [=](auto& table, Rooms& r, int n) {
            (table.*of).forward(r[0], r[2], r[3], r[4], n);
            (table.*of).inverse(r[5], r[6], r[7], r[1], n);
            (table.*of).forwardInPlace(r[8], r[9], r[10], n);
            (table.*of).inverseInPlace(r[11], r[12], r[13], n);
        });
}

TEST(ComponentTransformKernels, Reversible) { rows(&ComponentTransformKernels::reversible); }
TEST(ComponentTransformKernels, Irreversible) { rows(&ComponentTransformKernels::irreversible); }

}
