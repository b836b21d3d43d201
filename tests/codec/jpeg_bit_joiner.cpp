// SPDX-License-Identifier: Apache-2.0
// Joined parts are the stuffed bytes of all their bits.
#include "codec/jpeg/encode/bit_joiner.h"

#include <gtest/gtest.h>

#include "random.h"

namespace {

using namespace qel::codec;
using namespace qel::test;
using File = std::vector<uint8_t>;

// The bytes of the bits, each 0xFF with its 0, and how many bits that is.
File stuffed(const std::vector<bool>& bits, int* length = nullptr)
{
    File file;
    for (size_t i = 0; i < bits.size(); i += 8) {
        int byte = 0;
        for (size_t k = i; k < std::min(i + 8, bits.size()); ++k) byte |= bits[k] << (7 - k % 8);
        file.push_back(uint8_t(byte));
        if (byte == 0xFF) file.push_back(0);
    }
    if (length) *length = int(8 * file.size()) - int(-bits.size() % 8);
    return file;
}

TEST(BitJoiner, WritesAllBitsOfAllParts)
{
    Random random(1);
    // From no ones at all to nothing else: bytes 0xFF are everywhere then.
    for (int ones : {0, 4, 7, 8})
        for (int round = 0; round < 50; ++round) {
            File out = {1, 2, 3}, expected = out;
            jpeg::BitJoiner joiner(out);
            for (int interval = 0; interval < 3; ++interval) {
                std::vector<bool> all;
                for (int part = random.between(0, 5); part > 0; --part) {
                    std::vector<bool> bits(size_t(random.between(0, 300)));
                    for (auto&& bit : bits) bit = random.between(0, 7) < ones;
                    all.insert(all.end(), bits.begin(), bits.end());
                    int length;
                    File coded = stuffed(bits, &length);
                    joiner.append(coded.data(), length);
                }
                while (all.size() % 8) all.push_back(true);
                File bytes = stuffed(all);
                expected.insert(expected.end(), bytes.begin(), bytes.end());
                joiner.marker(0xD3);
                expected.insert(expected.end(), {0xFF, 0xD3});
            }
            ASSERT_EQ(out, expected) << ones << " " << round;
        }
}

}
