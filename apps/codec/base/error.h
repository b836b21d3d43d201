// SPDX-License-Identifier: Apache-2.0
// How the codec reports what it cannot do: one exception with one line of text, and where in the file.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace qel::codec {

class CodecError : public std::runtime_error {
public:
    explicit CodecError(const std::string& what) : std::runtime_error(what) {}
    // `position` is a byte offset in the input.
    CodecError(const std::string& what, uint64_t position)
        : std::runtime_error(what + " (at byte " + std::to_string(position) + ")"), position_(position)
    {}

    std::optional<uint64_t> position() const { return position_; }

private:
    std::optional<uint64_t> position_;
};

}
