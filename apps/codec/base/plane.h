// SPDX-License-Identifier: Apache-2.0
// Rows of 8-bit samples of one component: a whole plane, or the few latest rows of one that goes by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace qel::codec {

class Plane {
public:
    // Keeps `keptRows` rows: row r lies where row r - keptRows was. Samples are left unset.
    Plane(int width, int keptRows)
        : width_(width), rows_(keptRows), step_((width + 63) / 64 * 64 + kGap),
          samples_(std::make_unique_for_overwrite<uint8_t[]>(size_t(step_) * keptRows))
    {}

    uint8_t* row(int r) { return samples_.get() + size_t(r % rows_) * step_; }
    const uint8_t* row(int r) const { return samples_.get() + size_t(r % rows_) * step_; }
    int width() const { return width_; }
    int step() const { return step_; }
    size_t sizeInBytes() const { return size_t(step_) * rows_; }

private:
    // Eight rows at a distance of a power of two would meet in one set of a cache.
    static constexpr int kGap = 64;
    int width_, rows_, step_;
    std::unique_ptr<uint8_t[]> samples_;
};

}
