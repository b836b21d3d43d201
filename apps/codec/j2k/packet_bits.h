// SPDX-License-Identifier: Apache-2.0
// The bits of a packet's header: from the top of each byte, and behind a 0xFF only seven (T.800 B.10.1).
#pragma once

#include <vector>

#include "codec/base/bytes.h"
#include "codec/base/error.h"

namespace qel::codec::j2k {

class PacketBits {
public:
    explicit PacketBits(Bytes bytes) : bytes_(bytes) {}

    // Throws CodecError where the bytes end.
    int bit()
    {
        if (left_ == 0) next();
        return last_ >> --left_ & 1;
    }
    uint32_t bits(int count)
    {
        uint32_t value = 0;
        while (count-- > 0) value = value << 1 | uint32_t(bit());
        return value;
    }
    // Ends the header; returns the number of its bytes.
    size_t finish()
    {
        if (last_ == 0xFF) next();
        return used_;
    }

private:
    void next()
    {
        if (used_ == bytes_.size()) throw CodecError("the header of a packet is cut off");
        left_ = last_ == 0xFF ? 7 : 8;
        last_ = bytes_[used_++];
    }

    Bytes bytes_;
    size_t used_ = 0;
    int last_ = 0, left_ = 0;
};

// Appends to a vector.
class PacketBitWriter {
public:
    explicit PacketBitWriter(std::vector<uint8_t>& bytes) : bytes_(bytes) {}

    void bit(int value)
    {
        next_ = next_ << 1 | value;
        if (--free_ == 0) store();
    }
    void bits(uint32_t value, int count)
    {
        while (count-- > 0) bit(int(value >> count & 1));
    }
    // Ends the header: fills the last byte with zeros. Behind a 0xFF that is a byte of its own.
    void finish()
    {
        if (free_ == 8) return;
        next_ <<= free_;
        store();
    }

private:
    void store()
    {
        bytes_.push_back(uint8_t(next_));
        free_ = next_ == 0xFF ? 7 : 8;
        next_ = 0;
    }

    std::vector<uint8_t>& bytes_;
    int next_ = 0, free_ = 8;
};

}
