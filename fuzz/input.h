// SPDX-License-Identifier: Apache-2.0
// What the targets of the library draw from their bytes, and buffers of exactly the size that a function may use.
#pragma once

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <vector>

#include <qeljx.h>

#if QELJX_GUARDS_BUFFERS
#include "guarded.h"
#endif

// After the last byte all is 0.
class Input {
public:
    Input(const uint8_t* data, size_t size) : next_(data), end_(data + size) {}

    bool isEmpty() const { return next_ == end_; }
    size_t left() const { return size_t(end_ - next_); }
    template <class T> T value()
    {
        T value = {};
        fill(&value, sizeof value);
        return value;
    }
    int below(int count) { return value<uint8_t>() % count; }
    void fill(void* to, size_t size)
    {
        size_t taken = std::min(size, left());
        memset(to, 0, size);
        if (taken) memcpy(to, next_, taken); // without any bytes, the address may be null
        next_ += taken;
    }

private:
    const uint8_t* next_;
    const uint8_t* end_;
};

// Fuzzers have sanitizers that watch a vector; where random bytes stand in for a fuzzer, a page behind it faults.
#if QELJX_GUARDS_BUFFERS
struct Memory : qel::test::Guarded<uint8_t> {
    using Guarded::Guarded;
    Memory(Memory&&) = default;
    ~Memory()
    {
        if (!intact()) abort();
    }
};
#else
using Memory = std::vector<uint8_t>;
#endif

// At an address that no type would choose.
class Buffer {
public:
    explicit Buffer(size_t size) : bytes_(size + 1) {}
    Buffer(size_t size, Input& in) : Buffer(size) { in.fill(bytes_.data() + 1, size); }

    template <class T> T* as() { return (T*)(bytes_.data() + 1); }
    operator uint8_t*() { return as<uint8_t>(); }

private:
    Memory bytes_;
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
