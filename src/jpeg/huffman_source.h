// Where entropy-coded bits are read.
#pragma once

#include <stdint.h>

namespace qel {

// A segment of `len` bytes, or one that only a marker ends.
struct BitSource {
    const uint8_t* src;
    int len;
    int pos;
    uint32_t marker; // 0 until one is met
    uint32_t bits;   // the last `count` ones have not been used; what is above them means nothing
    int count;
};

}
