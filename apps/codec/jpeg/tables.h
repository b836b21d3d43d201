// SPDX-License-Identifier: Apache-2.0
// Constant tables of T.81: zig-zag order, and the typical quantization and Huffman tables of Annex K.
#pragma once

#include <array>
#include <cstdint>

namespace qel::codec::jpeg {

// kZigzag[k] is the natural (row by row) position of the k-th coefficient of a segment or scan (T.81 Figure A.6).
inline constexpr std::array<uint8_t, 64> kZigzag = [] {
    std::array<uint8_t, 64> order{};
    int row = 0, column = 0;
    for (uint8_t& position : order) {
        position = uint8_t(8 * row + column);
        bool up = (row + column) % 2 == 0;
        if (up && column == 7)
            ++row;
        else if (up && row == 0)
            ++column;
        else if (!up && row == 7)
            ++column;
        else if (!up && column == 0)
            ++row;
        else {
            row += up ? -1 : 1;
            column += up ? 1 : -1;
        }
    }
    return order;
}();

// A Huffman table as a DHT segment holds it: codes of each length 1 to 16, and their symbols.
struct HuffmanLists {
    std::array<uint8_t, 16> bits{};
    std::array<uint8_t, 256> values{};

    int count() const;
};

// Which of a pair of tables: those for luminance (and all of RGB and CMYK), or those for chrominance.
enum TableKind { kLuminance, kChrominance };

// Quantization steps (K.1, K.2) in natural order.
extern const std::array<uint8_t, 64> kTypicalSteps[2];

// Huffman tables (K.3 to K.6).
extern const HuffmanLists kTypicalDc[2], kTypicalAc[2];

}
