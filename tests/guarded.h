// Buffers whose edges are watched: a page that faults lies directly behind (or before) the elements, and bytes of a
// known value on the other side.
#pragma once

#include <stdint.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <new>

namespace qel::test {

enum class Fault { behind, before };

template <class T> class Guarded {
public:
    // `offset` bytes lie between the elements and the faulting page, to try every alignment.
    explicit Guarded(size_t count, Fault fault = Fault::behind, size_t offset = 0) : count_(count), fault_(fault)
    {
        page_ = (size_t)sysconf(_SC_PAGESIZE);
        size_t open = (count * sizeof(T) + offset + kWatched + page_ - 1) / page_ * page_;
        mapped_ = open + page_;
        void* memory = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        base_ = (uint8_t*)memory;
        uint8_t* forbidden = fault == Fault::behind ? base_ + open : base_;
        mprotect(forbidden, page_, PROT_NONE);
        start_ = fault == Fault::behind ? base_ + open - offset - count * sizeof(T) : base_ + page_ + offset;
        open_ = fault == Fault::behind ? base_ : base_ + page_;
        openSize_ = open;
        memset(open_, kValue, open);
    }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;
    ~Guarded() { munmap(base_, mapped_); }

    T* data() { return (T*)start_; }
    const T* data() const { return (const T*)start_; }
    size_t size() const { return count_; }
    size_t sizeInBytes() const { return count_ * sizeof(T); }

    // True if no byte outside the elements has changed.
    bool intact() const
    {
        for (const uint8_t* p = open_; p != start_; ++p)
            if (*p != kValue) return false;
        for (const uint8_t* p = start_ + sizeInBytes(); p != open_ + openSize_; ++p)
            if (*p != kValue) return false;
        return true;
    }

private:
    static constexpr size_t kWatched = 128;
    static constexpr uint8_t kValue = 0xA5;
    size_t count_, page_, mapped_, openSize_;
    Fault fault_;
    uint8_t *base_, *start_, *open_;
};

}
