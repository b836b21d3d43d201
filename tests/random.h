// SPDX-License-Identifier: Apache-2.0
// Seeded random data for tests: full range, with the extremes more often than chance would have them.
#pragma once

#include <string.h>

#include <limits>
#include <random>

namespace qel::test {

class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}

    // A whole number in low..high.
    int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }

    // `p` may lie at any address.
    template <class T> void fill(T* p, size_t count)
    {
        using Limits = std::numeric_limits<T>;
        for (size_t i = 0; i < count; ++i) {
            int kind = between(0, 15);
            T value = kind == 0 ? Limits::min() : kind == 1 ? Limits::max() : T(engine_());
            memcpy(p + i, &value, sizeof(T));
        }
    }

private:
    std::mt19937 engine_;
};

}
