// SPDX-License-Identifier: Apache-2.0
// Reading of fields.
#include "codec/base/fields.h"

namespace qel::codec {

uint64_t Fields::number(size_t count)
{
    uint64_t value = 0;
    for (uint8_t byte : take(count)) value = value << 8 | byte;
    return value;
}

Bytes Fields::take(size_t count)
{
    if (bytes_.size() < count) fail("too short");
    auto taken = bytes_.first(count);
    bytes_ = bytes_.subspan(count);
    position_ += count;
    return taken;
}

void Fields::finish() const
{
    if (!atEnd()) fail("too long");
}

void Fields::fail(const std::string& what) const { throw CodecError(std::string(name_) + ": " + what, position_); }

}
