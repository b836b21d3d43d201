// SPDX-License-Identifier: Apache-2.0
// How far a progressive picture has come: which bits of which coefficients have had their scans (T.81 G.1.1).
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "codec/jpeg/headers.h"

namespace qel::codec::jpeg {

class Progression {
public:
    explicit Progression(const Info& info) : low_(info.components.size())
    {
        for (auto& component : low_) component.fill(kNothing);
    }

    // Takes a scan in. False if it does not fit what came before it.
    bool accept(const ScanHeader& scan);

    bool has(int component) const { return low_[component][0] != kNothing; }
    // What the scans together lack, one line each. `hasBits`: they tell which bits they have, as progressive ones do.
    Warnings missing(bool hasBits) const;

private:
    bool isComplete() const;

    static constexpr int8_t kNothing = -1;
    // Bits not yet known of each coefficient, in zig-zag order.
    std::vector<std::array<int8_t, 64>> low_;
    // A scan repeated bits, left some out, or had AC coefficients before the DC coefficients of their component.
    bool isOutOfOrder_ = false;
};

}
