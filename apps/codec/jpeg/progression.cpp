// SPDX-License-Identifier: Apache-2.0
// The order of progressive scans.
#include "codec/jpeg/progression.h"

#include <algorithm>
#include <string>

namespace qel::codec::jpeg {

bool Progression::accept(const ScanHeader& scan)
{
    bool fits = scan.high == 0 || scan.high == scan.low + 1;
    for (auto& component : scan.components) {
        auto& low = low_[component.index];
        fits = fits && (scan.first == 0 || low[0] != kNothing);
        for (int k = scan.first; k <= scan.last; ++k) {
            fits = fits && low[k] == (scan.high == 0 ? kNothing : scan.high);
            low[k] = int8_t(scan.low);
        }
    }
    isOutOfOrder_ |= !fits;
    return fits;
}

Warnings Progression::missing(bool hasBits) const
{
    Warnings warnings;
    for (int i = 0; i < int(low_.size()); ++i)
        if (!has(i)) warnings.push_back("component " + std::to_string(i + 1) + " is missing");
    if (isOutOfOrder_) warnings.push_back("the scans are out of order");
    if (hasBits && !isComplete() && warnings.empty())
        warnings.push_back("scans that would refine the picture are missing");
    return warnings;
}

// All bits of all coefficients are there.
bool Progression::isComplete() const
{
    return std::ranges::all_of(
        low_, [](auto& component) { return std::ranges::all_of(component, [](int8_t low) { return low == 0; }); });
}

}
