// MCU kernels: every build equals the scalar one, for any blocks, at any address.
#include "jpeg/mcu.h"

#include <array>
#include <memory>

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

template <class T> using Buffer = std::unique_ptr<Guarded<T>>;

struct Shape {
    int columns, rows, bytesPerPixel, components;
    int step() const { return columns * bytesPerPixel + 5; }
    int lumaBlocks() const { return columns * rows / 64; }
};

// The blocks of each component and a tile, all `offset` bytes off their alignment.
class Mcu {
public:
    Mcu(Shape shape, Fault fault, size_t offset) : shape_(shape)
    {
        for (int c = 0; c < shape.components; ++c) {
            int count = 64 * (c == 0 || c == 3 ? shape.lumaBlocks() : 1);
            blocks_[c] = std::make_unique<Guarded<int16_t>>(count, fault, offset);
            pointers_[c] = blocks_[c]->data();
        }
        size_t bytes = size_t(shape.step()) * (shape.rows - 1) + shape.columns * shape.bytesPerPixel;
        tile_ = std::make_unique<Guarded<uint8_t>>(bytes, fault, offset);
    }
    // Samples over the whole range, or (every other time) near that of pictures, where the rounding shows.
    void fill(Random& random, bool narrow)
    {
        random.fill(tile_->data(), tile_->size());
        for (int c = 0; c < shape_.components; ++c)
            for (size_t i = 0; i < blocks_[c]->size(); ++i) {
                int16_t value = int16_t(random.between(-300, 300));
                if (!narrow) random.fill(&value, 1);
                memcpy(blocks_[c]->data() + i, &value, sizeof value);
            }
    }
    void copy(const Mcu& other)
    {
        memcpy(tile_->data(), other.tile_->data(), tile_->size());
        for (int c = 0; c < shape_.components; ++c)
            memcpy(blocks_[c]->data(), other.blocks_[c]->data(), blocks_[c]->sizeInBytes());
    }
    bool equals(const Mcu& other) const
    {
        bool same = tile_->intact() && memcmp(tile_->data(), other.tile_->data(), tile_->size()) == 0;
        for (int c = 0; c < shape_.components; ++c)
            same = same && blocks_[c]->intact() &&
                   memcmp(blocks_[c]->data(), other.blocks_[c]->data(), blocks_[c]->sizeInBytes()) == 0;
        return same;
    }
    template <class Pixel> void run(void (*kernel)(const int16_t* const*, Pixel*, int))
    {
        kernel(pointers_, (Pixel*)tile_->data(), shape_.step());
    }
    template <class Pixel> void run(void (*kernel)(const Pixel*, int, int16_t* const*))
    {
        kernel((const Pixel*)tile_->data(), shape_.step(), pointers_);
    }

private:
    Shape shape_;
    std::array<Buffer<int16_t>, 4> blocks_;
    int16_t* pointers_[4] = {};
    Buffer<uint8_t> tile_;
};

// kernelOf(table) is the kernel to try.
template <class KernelOf> void equalsScalar(Shape shape, KernelOf kernelOf)
{
    everyBuild<McuKernels>([&](const McuKernels& table) {
        Random random(1);
        for (int round = 0; round < 60; ++round) {
            Mcu mcu(shape, round % 4 < 2 ? Fault::behind : Fault::before, round % 5), expected(shape, Fault::behind, 0);
            mcu.fill(random, round % 2 == 1);
            expected.copy(mcu);
            mcu.run(kernelOf(table));
            expected.run(kernelOf(McuKernels::scalar));
            ASSERT_TRUE(mcu.equals(expected)) << shape.columns << 'x' << shape.rows << ", round " << round;
        }
    });
}

template <class Kernel>
void everySampling(BySampling<Kernel> McuKernels::*family, int bytesPerPixel, int components = 3)
{
    equalsScalar({8, 8, bytesPerPixel, components}, [=](auto& table) { return (table.*family).s444; });
    equalsScalar({16, 8, bytesPerPixel, components}, [=](auto& table) { return (table.*family).s422; });
    equalsScalar({16, 16, bytesPerPixel, components}, [=](auto& table) { return (table.*family).s411; });
}

using Table = McuKernels;

TEST(McuKernels, Decoders)
{
    everySampling(&Table::toRgb, 3);
    everySampling(&Table::toBgr, 3);
    everySampling(&Table::toBgr555, 2);
    everySampling(&Table::toBgr565, 2);
    everySampling(&Table::toCmyk, 4, 4);
    everySampling(&Table::toYcc, 3);
    equalsScalar({16, 8, 2, 3}, [](auto& table) { return table.toPairs422; });
}

TEST(McuKernels, Encoders)
{
    everySampling(&Table::fromRgb, 3);
    everySampling(&Table::fromBgr, 3);
    everySampling(&Table::fromBgr555, 2);
    everySampling(&Table::fromBgr565, 2);
    everySampling(&Table::fromCmyk, 4, 4);
    everySampling(&Table::fromYcc, 3);
    equalsScalar({16, 8, 2, 3}, [](auto& table) { return table.fromPairs422; });
}

}
