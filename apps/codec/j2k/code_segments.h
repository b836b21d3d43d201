// SPDX-License-Identifier: Apache-2.0
// Which coding passes of a code-block share a codeword segment (T.800 D.4.2, D.6).
#pragma once

#include <cstdint>

#include "codec/j2k/headers.h"

namespace qel::codec::j2k {

// Passes before the first raw one with selective bypass (T.800 table D.9).
inline constexpr int kPassesBeforeBypass = 10;

// Passes that can still join the segment of pass number `pass` of a code-block, that one included. `style` has bits of
// style.
constexpr int passesToTermination(int style, int pass)
{
    if (style & style::kTerminateEvery) return 1;
    if (!(style & style::kBypass)) return INT32_MAX;
    if (pass < kPassesBeforeBypass) return kPassesBeforeBypass - pass;
    // From here on two raw passes and one cleanup.
    return (pass - kPassesBeforeBypass) % 3 == 0 ? 2 : 1;
}

constexpr bool beginsSegment(int style, int pass) { return pass == 0 || passesToTermination(style, pass - 1) == 1; }

}
