// SPDX-License-Identifier: Apache-2.0
// Joins entropy-coded data that was coded in parts, bit behind bit (T.81 F.1.2.3).
#pragma once

#include <cstdint>
#include <vector>

namespace qel::codec::jpeg {

class BitJoiner {
public:
    // Writes behind what `out` has.
    explicit BitJoiner(std::vector<uint8_t>& out) : out_(out) {}

    // `bits` bits that were coded as if they began at a byte: each byte 0xFF is followed by a stuffed 0, which counts.
    // Those of a partial last byte stand at its top.
    void append(const uint8_t* coded, int bits);
    // Fills the last byte with ones and writes a marker behind it; finish() does without one.
    void marker(uint8_t code);
    void finish();

private:
    uint8_t* put(uint32_t value, int bits, uint8_t* to);

    std::vector<uint8_t>& out_;
    uint64_t held_ = 0; // the last bits of all, fewer than a byte
    int heldBits_ = 0;
};

}
