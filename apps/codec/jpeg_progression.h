// How far a progressive picture has come: which bits of which coefficients have had their scans (T.81 G.1.1).
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "codec/jpeg_headers.h"

namespace qel::codec {

class Progression {
public:
    explicit Progression(const JpegInfo& info) : low_(info.components.size())
    {
        for (auto& component : low_) component.fill(kNothing);
    }

    // Takes a scan in. False if it does not fit what came before it: it repeats bits, leaves some out, or has AC
    // coefficients of a component whose DC coefficients are still unknown.
    bool accept(const ScanHeader& scan);

    bool has(int component) const { return low_[component][0] != kNothing; }
    // All bits of all coefficients are there.
    bool isComplete() const;

private:
    static constexpr int8_t kNothing = -1;
    // Bits not yet known of each coefficient, in zig-zag order.
    std::vector<std::array<int8_t, 64>> low_;
};

}
