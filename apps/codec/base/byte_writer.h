// SPDX-License-Identifier: Apache-2.0
// Appends the fields of marker segments and boxes, most significant byte first.
#pragma once

#include <string_view>

#include "codec/base/bytes.h"
#include "codec/base/error.h"

namespace qel::codec {

class ByteWriter {
public:
    explicit ByteWriter(std::vector<uint8_t>& bytes) : bytes_(bytes) {}

    void u8(int value) { bytes_.push_back(uint8_t(value)); }
    void u16(int value) { number(uint32_t(value), 2); }
    void u32(uint32_t value) { number(value, 4); }
    void text(std::string_view text) { bytes_.insert(bytes_.end(), text.begin(), text.end()); }
    void append(Bytes more) { bytes_.insert(bytes_.end(), more.begin(), more.end()); }
    size_t position() const { return bytes_.size(); }
    // Writes, in four bytes that stand already at `position`, how many bytes there are from `begin` on. Throws
    // CodecError for 4 GiB and more.
    void setLength(size_t position, size_t begin)
    {
        size_t length = bytes_.size() - begin;
        if (length > UINT32_MAX) throw CodecError("the file would be too large");
        setU32(position, uint32_t(length));
    }
    void setU32(size_t position, uint32_t value)
    {
        for (size_t i = 0; i < 4; ++i) bytes_[position + i] = uint8_t(value >> (24 - 8 * i));
    }

private:
    void number(uint32_t value, int count)
    {
        while (count-- > 0) u8(int(value >> 8 * count & 0xFF));
    }

    std::vector<uint8_t>& bytes_;
};

}
