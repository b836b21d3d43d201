// SPDX-License-Identifier: Apache-2.0
// Reads the fields of marker segments and boxes, which hold big-endian numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "codec/base/bytes.h"
#include "codec/base/error.h"

namespace qel::codec {

// A marker with the parameters behind it.
struct Segment {
    uint8_t code = 0;
    size_t position = 0; // of the 0xFF
    size_t end = 0;      // first byte behind the segment
    Bytes parameters;
};

// Walks some bytes of a file, and refuses to read past them.
class Fields {
public:
    // `position` is that of the first byte in the file, `name` is for messages.
    Fields(Bytes bytes, size_t position, const char* name) : bytes_(bytes), position_(position), name_(name) {}
    Fields(const Segment& segment, const char* name)
        : Fields(segment.parameters, segment.end - segment.parameters.size(), name)
    {}

    int u8() { return int(number(1)); }
    int u16() { return int(number(2)); }
    uint32_t u32() { return uint32_t(number(4)); }
    uint64_t u64() { return number(8); }
    // The unsigned number in the next `count` bytes, 1 to 8.
    uint64_t number(size_t count);
    Bytes take(size_t count);
    Bytes takeRest() { return take(bytes_.size()); }
    size_t left() const { return bytes_.size(); }
    bool atEnd() const { return bytes_.empty(); }
    size_t position() const { return position_; }
    // Throws CodecError unless all bytes have been read.
    void finish() const;
    [[noreturn]] void fail(const std::string& what) const;

private:
    Bytes bytes_;
    size_t position_; // of the next byte, in the file
    const char* name_;
};

}
