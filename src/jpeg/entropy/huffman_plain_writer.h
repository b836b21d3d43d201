// SPDX-License-Identifier: Apache-2.0
// Symbols and values to a stream, one at a time: the plain steps that define what every encoder writes.
#pragma once

#include <string.h>

#include "core/inline.h"
#include "core/select.h"
#include "jpeg/entropy/huffman_bits.h"
#include "jpeg/entropy/magnitudes.h"

namespace qel {

// Of a value of at most 16 bits and a sign, as ownqj_get_csize has it.
inline int categoryOf(int value)
{
    auto magnitude = uint32_t(value < 0 ? -value : value);
    return int(magnitude < 256 ? own_qj_csize[magnitude] : own_qj_csize[magnitude >> 8] + 8);
}

inline int16_t coefficientAt(const int16_t* block, int index)
{
    int16_t value;
    memcpy(&value, block + index, sizeof value);
    return value;
}

struct PlainWriter {
    uint8_t* dst;
    int dstLen;
    int* pos;
    QelEncodeHuffmanState* state;

    int room() const { return unsigned(*pos) < unsigned(dstLen) ? dstLen - *pos : 0; }
    QelStatus write(uint32_t value, int length) const
    {
        return ownqj_write_bits_jpeg(value, length, dst, dstLen, pos, state);
    }
    QelStatus writeSymbol(const QelEncodeHuffmanSpec* spec, int symbol) const
    {
        uint32_t entry = spec->entries[symbol];
        return write(entry, int(entry >> 16));
    }
    // A negative value is written as the one's complement of its magnitude.
    QelStatus writeValue(int value, int category) const
    {
        return category == 0 ? qelStsNoErr : write(uint32_t(value < 0 ? value - 1 : value), category);
    }
    // A code and the bits after it at once, where they end at most two bytes, neither of them 0xFF. False leaves all
    // to the steps above.
    QEL_INLINE bool writeShort(const QelEncodeHuffmanSpec* spec, Magnitude magnitude) const
    {
        auto category = uint32_t(magnitude.category);
        uint32_t entry = spec->entries[category], length = entry >> 16,
                 count = uint32_t(state->count) + length + category;
        // Compared as wider numbers, so that neither a negative position nor a negative length passes.
        auto at = uint32_t(*pos);
        if (length == 0 || count >= 24 || category > 15 || int64_t(at) + 1 >= dstLen) return false;
        uint32_t code = (entry & 0xFFFF) << category | uint32_t(magnitude.bits);
        uint32_t bits = state->accumulator[0] | code << (24 - count);
        auto first = uint8_t(bits >> 16), second = uint8_t(bits >> 8);
        if (first == 0xFF || second == 0xFF) return false;
        // How many bytes fill up cannot be predicted, hence no branch: one that does not is stored where nobody looks.
        uint8_t elsewhere, *next = dst + at;
        auto firstTo = (uint8_t*)uintptr_t(select(count & 24, uintptr_t(next), uintptr_t(&elsewhere)));
        auto secondTo = (uint8_t*)uintptr_t(select(count & 16, uintptr_t(next) + 1, uintptr_t(&elsewhere)));
        *pos += int(count >> 3);
        *firstTo = first;
        *secondTo = second;
        const uint32_t accumulator[2] = {bits << (count & 24), 0};
        memcpy(state->accumulator, accumulator, sizeof accumulator);
        state->count = int32_t(count & 7);
        return true;
    }
    // Fills the last byte with ones and begins anew, also where there is no room for that byte.
    QelStatus flush() const
    {
        QelStatus status = write(0x7F, 7);
        ownqj_EncodeHuffmanStateInit(state);
        return status;
    }
};

}
