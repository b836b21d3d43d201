// Random but legal ways to spread the coefficients of a component over progressive scans.
#pragma once

#include <array>
#include <vector>

#include "random.h"

namespace qel::test {

struct Band {
    int first, last, high, low; // Ss, Se, Ah, Al
};

// Scans of one component's AC coefficients, from nothing to all bits: bands of any width, each bit of each coefficient
// once. At first up to `mostLeft` bits are left out.
inline std::vector<Band> randomAcBands(Random& random, int mostLeft)
{
    constexpr int kUnseen = -1;
    std::array<int, 64> low;
    low.fill(kUnseen);
    low[0] = 0;
    std::vector<Band> bands;
    for (;;) {
        std::vector<int> unfinished;
        for (int k = 1; k < 64; ++k)
            if (low[k] != 0) unfinished.push_back(k);
        if (unfinished.empty()) return bands;
        int first = unfinished[random.between(0, int(unfinished.size()) - 1)], last = first;
        // Wide bands more often than chance would have them.
        int most = random.between(0, 1) ? 63 : random.between(first, 63);
        while (first > 1 && most == 63 && low[first - 1] == low[last]) --first;
        while (last < most && low[last + 1] == low[first]) ++last;
        int high = low[first] == kUnseen ? 0 : low[first];
        int left = low[first] == kUnseen ? random.between(0, mostLeft) : high - 1;
        bands.push_back({first, last, high, left});
        for (int k = first; k <= last; ++k) low[k] = left;
    }
}

// The same for the DC coefficients.
inline std::vector<Band> randomDcBands(Random& random, int mostLeft)
{
    int low = random.between(0, mostLeft);
    std::vector<Band> bands = {{0, 0, 0, low}};
    for (; low > 0; --low) bands.push_back({0, 0, low, low - 1});
    return bands;
}

}
