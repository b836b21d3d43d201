// SPDX-License-Identifier: Apache-2.0
// The coding passes of a code-block (T.800 D.3), and the codeword segments that they make (D.4.2, D.6): for decoder and
// encoder.
#pragma once

#include <stdint.h>

#include "qeljx/jpeg2k_coding.h"

namespace qel {

enum PassKind { kSignificance, kRefinement, kCleanup };

// From the cleanup pass of plane `top` down to that of plane `low`. More passes are numbered on, but do not exist.
struct PassSequence {
    int32_t top, low, style;

    static constexpr int kPassesBeforeRaw = 10;

    int64_t count() const { return top < low ? 0 : 3 * (int64_t(top) - low) + 1; }
    PassKind kindOf(int64_t pass) const { return PassKind((pass + 2) % 3); }
    int planeOf(int64_t pass) const { return int(top - (pass + 2) / 3); }
    bool isRaw(int64_t pass) const
    {
        return (style & JPEG2K_BYPASS) && pass >= kPassesBeforeRaw && kindOf(pass) != kCleanup;
    }
    // Also where it is the last one.
    bool endsSegment(int64_t pass) const
    {
        return (style & JPEG2K_TERMINATE_EVERY_PASS) || pass == count() - 1 || isRaw(pass) != isRaw(pass + 1);
    }
};

}
