// SPDX-License-Identifier: Apache-2.0
// Working sets: memory with data in it, planes of pixels, and the sizes at which whole planes are measured.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace qel::bench {

// Bytes aligned to 64, every page touched, filled with noise that is the same in every run.
class Memory {
public:
    explicit Memory(size_t size) : bytes_((uint8_t*)aligned_alloc(64, (size + 127) / 64 * 64), free)
    {
        if (!bytes_) throw std::bad_alloc();
        uint64_t x = 0x9E3779B97F4A7C15;
        for (size_t i = 0; i < (size + 7) / 8; ++i) {
            x ^= x << 13, x ^= x >> 7, x ^= x << 17;
            ((uint64_t*)bytes_.get())[i] = x;
        }
    }
    uint8_t* data() { return bytes_.get(); }

private:
    std::unique_ptr<uint8_t, void (*)(void*)> bytes_;
};

// How the pixels of a picture lie: so many planes, so many elements of a pixel in each, so many bytes in an element.
struct Layout {
    int planes, channels, bytes;
    bool floats = false;
    int bytesPerPixel() const { return planes * channels * bytes; }
};

// Planes that share a size and a step.
class Planes {
public:
    // `margin` bytes lie before and after the samples of each row.
    Planes(Layout layout, int width, int height, bool powerOfTwo, int margin = 0)
    {
        size_t row = size_t(width) * layout.channels * layout.bytes + 2 * margin;
        size_t step = powerOfTwo ? 1 : row;
        while (step < row) step *= 2;
        step_ = int(step);
        for (int p = 0; p < layout.planes; ++p) memory_.emplace_back(step * height);
        for (auto& memory : memory_) {
            rows_.push_back(memory.data() + margin);
            if (layout.floats) makeFloats(memory.data(), step * height / sizeof(float));
        }
    }
    int step() const { return step_; }
    // The first row of plane `p`; the array of all, as functions over planes want it.
    uint8_t* operator[](int p) const { return rows_[p]; }
    uint8_t* const* pointers() const { return rows_.data(); }

private:
    // Whole numbers: of random bits many would be no numbers, or too small for the fast paths of a processor.
    static void makeFloats(void* bits, size_t count)
    {
        for (size_t i = 0; i < count; ++i) ((float*)bits)[i] = float(((int32_t*)bits)[i] >> 16);
    }

    std::vector<Memory> memory_;
    std::vector<uint8_t*> rows_;
    int step_;
};

struct WorkingSet {
    const char* name;
    int width, height;
    bool powerOfTwo;
};

// L1: 16 KB read and written together. L2: 120,000 pixels in rows as long as those of pictures are. Beyond the caches:
// 15 megapixels or more, so many that a case reads and writes 128 MB; the second time with rows whose distance is a
// power of two, which makes them meet in the same lines of the caches.
inline std::vector<WorkingSet> workingSets(double bytesPerPixel)
{
    int width = int(16384 / 8 / bytesPerPixel) / 16 * 16;
    double beyond = std::max(1.0, (128 << 20) / bytesPerPixel / 15e6);
    return {{"L1", width, 8, false},
            {"L2", 1200, 100, false},
            {"memory", 5000, int(3000 * beyond), false},
            {"memory2n", 4000, int(3750 * beyond), true}};
}

// Where two threads are compared with one: in cache and beyond it.
inline bool isForThreads(const WorkingSet& set)
{
    return set.name == std::string("L2") || set.name == std::string("memory");
}

}
