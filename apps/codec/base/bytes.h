// SPDX-License-Identifier: Apache-2.0
// Bytes in and out: files are read whole, and written piece by piece to wherever the caller wants them.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace qel::codec {

using Bytes = std::span<const uint8_t>;

// Takes the next bytes of a file that is being written; throws CodecError where it cannot.
using ByteSink = std::function<void(Bytes)>;

// What the user should know though the work goes on: one line of text each, no full stop.
using Warnings = std::vector<std::string>;

}
