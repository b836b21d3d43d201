// SPDX-License-Identifier: Apache-2.0
// Huffman tables as files may state them.
#pragma once

#include "input.h"

// The counts of codes are made to fit, mostly: what does not is refused by the table's function.
struct StatedTable {
    uint8_t bits[16] = {}, values[256] = {};

    explicit StatedTable(Input& in)
    {
        int room = 1;
        for (uint8_t& count : bits) {
            room = std::min(2 * room, 256);
            count = uint8_t(in.below(8) < 7 ? in.below(room) : in.below(256));
            room = std::max(room - count, 1);
        }
        in.fill(values, sizeof values / 4);
        for (size_t i = 64; i < sizeof values; ++i) values[i] = uint8_t(37 * i);
    }
};
