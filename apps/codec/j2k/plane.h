// SPDX-License-Identifier: Apache-2.0
// Rows of samples or coefficients of a tile-component, a resolution or a subband.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace qel::codec::j2k {

template <class T> class Plane {
public:
    enum class Fill { zero, none };

    Plane() = default;
    Plane(uint32_t width, uint32_t height, Fill fill)
        : width_(width), height_(height), perRow_(((width + kSpareColumns + kUnit - 1) / kUnit | 1) * kUnit)
    {
        size_t bytes = sizeof(T) * perRow_ * (height + kSpareRows) + kAlignment;
        memory_.reset(fill == Fill::zero ? std::calloc(bytes, 1) : std::malloc(bytes));
        void* start = memory_.get();
        if (!start) throw std::bad_alloc();
        askForLargePages(start, bytes);
        samples_ = static_cast<T*>(std::align(kAlignment, 1, start, bytes));
    }
    Plane(Plane&&) = default;
    Plane& operator=(Plane&&) = default;

    uint32_t width() const { return width_; }
    uint32_t height() const { return height_; }
    // Bytes from one row to the next.
    int step() const { return int(sizeof(T) * perRow_); }
    T* row(size_t y) { return samples_ + perRow_ * y; }
    const T* row(size_t y) const { return samples_ + perRow_ * y; }

private:
    // A wavelet works on pairs of samples and rows, which may lead one beyond the last.
    static constexpr uint32_t kSpareColumns = 1, kSpareRows = 1;
    static constexpr size_t kAlignment = 64;
    // Rows are an odd number of cache lines apart: at a power of two they would meet in one set of a cache.
    static constexpr uint32_t kUnit = 16;
    static_assert(sizeof(T) * kUnit == kAlignment);

    // Fresh memory comes to life page by page, which takes longer than a wavelet does; large pages are fewer.
    static void askForLargePages([[maybe_unused]] void* start, [[maybe_unused]] size_t bytes)
    {
#ifdef MADV_HUGEPAGE
        constexpr size_t kPage = 4096, kWorthwhile = size_t(4) << 20;
        if (bytes < kWorthwhile || !std::align(kPage, kPage, start, bytes)) return;
        madvise(start, bytes / kPage * kPage, MADV_HUGEPAGE);
#endif
    }

    struct Free {
        void operator()(void* memory) const { std::free(memory); }
    };
    uint32_t width_ = 0, height_ = 0;
    size_t perRow_ = 0;
    std::unique_ptr<void, Free> memory_;
    T* samples_ = nullptr;
};

}
