// The order of progressive scans.
#include "codec/jpeg_progression.h"

#include <algorithm>

namespace qel::codec {

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
    return fits;
}

bool Progression::isComplete() const
{
    return std::ranges::all_of(
        low_, [](auto& component) { return std::ranges::all_of(component, [](int8_t low) { return low == 0; }); });
}

}
