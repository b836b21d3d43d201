// SPDX-License-Identifier: Apache-2.0
// Buffers whose edges are watched: a page that faults lies directly after (or before) the elements, and bytes of a
// known value on the other side.
#pragma once

#include <stdint.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

namespace qel::test {

// `count` pages between two that fault. Short runs are kept for the next one who asks: making them takes longer than
// most tests do.
class Pages {
public:
    explicit Pages(size_t count) : count_(count)
    {
        if (count < kKept && !kept(count).empty()) {
            first_ = kept(count).back();
            kept(count).pop_back();
            return;
        }
        void* memory = mmap(nullptr, (count + 2) * size(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        first_ = (uint8_t*)memory + size();
        mprotect(first_, count * size(), PROT_READ | PROT_WRITE);
    }
    Pages(Pages&& other) : count_(other.count_), first_(std::exchange(other.first_, nullptr)) {}
    ~Pages()
    {
        if (first_ == nullptr) return;
        if (count_ < kKept)
            kept(count_).push_back(first_);
        else
            munmap(first_ - size(), (count_ + 2) * size());
    }

    static size_t size() { return (size_t)sysconf(_SC_PAGESIZE); }
    uint8_t* begin() const { return first_; }
    uint8_t* end() const { return first_ + count_ * size(); }

private:
    static constexpr size_t kKept = 64;
    static std::vector<uint8_t*>& kept(size_t count)
    {
        static thread_local std::vector<uint8_t*> pages[kKept];
        return pages[count];
    }

    size_t count_;
    uint8_t* first_;
};

enum class Fault { after, before };

template <class T> class Guarded {
public:
    // `offset` bytes lie between the elements and the faulting page, to try every alignment.
    explicit Guarded(size_t count, Fault fault = Fault::after, size_t offset = 0)
        : pages_((count * sizeof(T) + offset + kWatched + Pages::size() - 1) / Pages::size()), count_(count)
    {
        start_ = fault == Fault::after ? pages_.end() - offset - count * sizeof(T) : pages_.begin() + offset;
        memset(pages_.begin(), kValue, size_t(pages_.end() - pages_.begin()));
    }

    T* data() { return (T*)start_; }
    const T* data() const { return (const T*)start_; }
    size_t size() const { return count_; }
    size_t sizeInBytes() const { return count_ * sizeof(T); }

    // True if no byte outside the elements has changed.
    bool intact() const
    {
        if (pages_.begin() == nullptr) return true; // moved elsewhere
        return isUntouched(pages_.begin(), start_) && isUntouched(start_ + sizeInBytes(), pages_.end());
    }

private:
    static constexpr size_t kWatched = 128;
    static constexpr uint8_t kValue = 0xA5;
    static bool isUntouched(const uint8_t* from, const uint8_t* to)
    {
        return from == to || (*from == kValue && memcmp(from, from + 1, size_t(to - from) - 1) == 0);
    }

    Pages pages_;
    size_t count_;
    uint8_t* start_;
};

}
