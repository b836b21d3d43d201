// The bits of a packet's header: from the top of each byte, and behind a 0xFF only seven (T.800 B.10.1).
#pragma once

#include "codec/bytes.h"
#include "codec/error.h"

namespace qel::codec {

class J2kPacketBits {
public:
    explicit J2kPacketBits(Bytes bytes) : bytes_(bytes) {}

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

}
