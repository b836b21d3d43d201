// SPDX-License-Identifier: Apache-2.0
// The order of a number's bytes in memory.
#pragma once

namespace qel {

constexpr bool kLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

}
