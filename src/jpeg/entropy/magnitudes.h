// SPDX-License-Identifier: Apache-2.0
// Values as Huffman coders write them: a category, and bits (T.81 F.1.2.1).
#pragma once

#include <stdint.h>

namespace qel {

// The category of a value, and the bits that follow its code: a negative value is written as the one's complement of
// its magnitude.
struct Magnitude {
    uint64_t category;
    uint64_t bits;
};
constexpr int kLargestOfAll = 16;
inline __attribute__((always_inline)) constexpr Magnitude measure(int value)
{
    uint32_t category = value == 0 ? 0 : 32 - uint32_t(__builtin_clz(uint32_t(value < 0 ? -value : value)));
    return {category, uint32_t(value < 0 ? value - 1 : value) & ((1u << category) - 1)};
}

// The same for -256 to 255: of[value + 256] is (bits << 8) | category.
struct SmallMagnitudes {
    uint16_t of[512];
};
constexpr SmallMagnitudes kSmallMagnitudes = [] {
    SmallMagnitudes table = {};
    for (int i = 0; i < 512; ++i) table.of[i] = uint16_t(measure(i - 256).bits << 8 | measure(i - 256).category);
    return table;
}();

inline __attribute__((always_inline)) Magnitude magnitudeOf(int value)
{
    uint32_t index = uint32_t(value) + 256;
    if (__builtin_expect(index >= 512, 0)) return measure(value);
    uint32_t entry = kSmallMagnitudes.of[index];
    return {entry & 0xFF, entry >> 8};
}

}
