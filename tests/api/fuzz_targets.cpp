// SPDX-License-Identifier: Apache-2.0
// The fuzz targets of the library on random bytes, with buffers that end at a page that faults: states and tables of
// any bytes, at odd addresses; whatever can be undone is.
#include <gtest/gtest.h>

#include <vector>

#include "random.h"

extern "C" {
int fuzz_code_block_decode(const uint8_t* data, size_t size);
int fuzz_code_block_encode(const uint8_t* data, size_t size);
int fuzz_huffman_decode(const uint8_t* data, size_t size);
int fuzz_huffman_encode(const uint8_t* data, size_t size);
int fuzz_rows(const uint8_t* data, size_t size);
}

namespace {

TEST(FuzzTargets, SurviveRandomBytes)
{
    qel::test::Random random(1);
    for (int round = 0; round < 6000; ++round) {
        std::vector<uint8_t> bytes(size_t(random.between(0, random.between(0, 2000))));
        random.fill(bytes.data(), bytes.size());
        for (auto target :
             {fuzz_code_block_decode, fuzz_code_block_encode, fuzz_huffman_decode, fuzz_huffman_encode, fuzz_rows})
            target(bytes.data(), bytes.size());
    }
}

}
