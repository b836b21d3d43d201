// Symbols and values to a stream, one at a time: the plain steps that define what every encoder writes.
#pragma once

#include <string.h>

#include "jpeg/huffman_bits.h"

namespace qel {

// As ownqj_get_csize has it.
inline int categoryOf(int value)
{
    auto magnitude = (uint32_t)(value < 0 ? -value : value);
    return magnitude == 0 ? 0 : 32 - __builtin_clz(magnitude);
}

inline int16_t coefficientAt(const int16_t* block, int index)
{
    int16_t value;
    memcpy(&value, block + index, sizeof value);
    return value;
}

struct HuffmanWriter {
    uint8_t* dst;
    int dstLen;
    int* pos;
    QelEncodeHuffmanState* state;

    int room() const { return (unsigned)*pos < (unsigned)dstLen ? dstLen - *pos : 0; }
    QelStatus write(uint32_t value, int length) const
    {
        return ownqj_write_bits_jpeg(value, length, dst, dstLen, pos, state);
    }
    QelStatus writeSymbol(const QelEncodeHuffmanSpec* spec, int symbol) const
    {
        uint32_t entry = spec->entries[symbol];
        return write(entry, (int)(entry >> 16));
    }
    // A negative value is written as the one's complement of its magnitude.
    QelStatus writeValue(int value, int category) const
    {
        return category == 0 ? qelStsNoErr : write((uint32_t)(value < 0 ? value - 1 : value), category);
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
