// SPDX-License-Identifier: Apache-2.0
// Sampling kernels: every build equals the scalar one, at any address, and touches nothing but what it may.
#include "jpeg/colour/sampling.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// Two sources and six destinations.
auto rowsOf(size_t source, size_t destination)
{
    std::vector<Room> rooms(8, room<uint8_t>(destination));
    rooms[0] = rooms[1] = room<uint8_t>(source);
    return rooms;
}

TEST(SamplingKernels, Box)
{
    everyRowEqualsScalar<SamplingKernels>([](size_t n) { return rowsOf(2 * n, n); },
                                          [](auto& table, Rooms& r, int n) {
                                              table.downH2V1(r[0], r[2], n);
                                              table.downH2V2(r[0], r[1], r[3], n);
                                          });
    everyRowEqualsScalar<SamplingKernels>([](size_t n) { return rowsOf(n, n / 2); },
                                          [](auto& table, Rooms& r, int n) {
                                              table.downRowH2V1(r[0], n, r[2]);
                                              table.downRowH2V2(r[0], r[1], n, r[3]);
                                          });
}

TEST(SamplingKernels, Triangle)
{
    // Planes have a sample on either side. For an odd width the last destination sample belongs to the one after the
    // last whole pair.
    everyRowEqualsScalar<SamplingKernels>([](size_t n) { return rowsOf(n / 2 + 2, n); },
                                          [](auto& table, Rooms& r, int n) {
                                              table.upH2V1(r[0] + 1, r[2], n);
                                              table.upH2V2(r[0] + 1, r[1] + 1, r[3], n);
                                              table.upBothH2V2(r[0] + 1, r[1] + 1, r[6], r[7], n);
                                              table.upH2V1.streamed(r[0] + 1, r[4], n);
                                              table.upH2V2.streamed(r[0] + 1, r[1] + 1, r[5], n);
                                          });
    everyRowEqualsScalar<SamplingKernels>([](size_t n) { return rowsOf(n, 2 * n); },
                                          [](auto& table, Rooms& r, int n) {
                                              table.upRowH2V1(r[0], n, r[2]);
                                              table.upRowH2V2(r[0], r[1], n, r[3]);
                                          });
}

}
