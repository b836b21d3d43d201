// Colour conversion kernels: every build equals the scalar one, and every door leads to its kernel.
#include "jpeg/colour.h"

#include <array>
#include <memory>
#include <tuple>
#include <type_traits>
#include <vector>

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// One row of each argument: random bytes where the kernel reads, guards where it writes.
template <class... Arguments> class Rows {
public:
    static constexpr size_t kRows = sizeof...(Arguments) - 1;
    using Kernel = void(Arguments...);
    using BytesPerPixel = std::array<int, kRows>;

    Rows(BytesPerPixel bytes, int width, size_t offset) : width_(width)
    {
        for (size_t k = 0; k < kRows; ++k)
            rows_[k] = std::make_unique<Guarded<uint8_t>>(bytes[k] * width, Fault::behind, offset);
    }
    void fill(Random& random)
    {
        for (size_t k = 0; k < kRows; ++k)
            if (kIsSource[k]) random.fill(rows_[k]->data(), rows_[k]->size());
    }
    void copySources(const Rows& other)
    {
        for (size_t k = 0; k < kRows; ++k)
            if (kIsSource[k]) memcpy(rows_[k]->data(), other.rows_[k]->data(), rows_[k]->size());
    }
    void run(Kernel* kernel) { run(kernel, std::make_index_sequence<kRows>()); }
    bool equals(const Rows& other) const
    {
        for (size_t k = 0; k < kRows; ++k)
            if (memcmp(rows_[k]->data(), other.rows_[k]->data(), rows_[k]->size()) != 0 || !rows_[k]->intact())
                return false;
        return true;
    }

private:
    static constexpr bool kIsSource[] = {std::is_const_v<std::remove_pointer_t<Arguments>>...};

    template <size_t... kIndex> void run(Kernel* kernel, std::index_sequence<kIndex...>)
    {
        using List = std::tuple<Arguments...>;
        kernel((std::tuple_element_t<kIndex, List>)rows_[kIndex]->data()..., width_);
    }

    int width_;
    std::array<std::unique_ptr<Guarded<uint8_t>>, kRows> rows_;
};

template <class... Arguments> using Entry = void (*ColourKernels::*)(Arguments...);
template <class... Arguments> using Door = void(Arguments...);

template <class... Arguments> void check(Entry<Arguments...> entry, Door<Arguments...>* whole,
                                         Door<Arguments...>* multipleOfFour,
                                         typename Rows<Arguments...>::BytesPerPixel bytes)
{
    auto compare = [&](Door<Arguments...>* kernel, int width, size_t offset, Random& random) {
        Rows<Arguments...> rows(bytes, width, offset), expected(bytes, width, 0);
        rows.fill(random);
        expected.copySources(rows);
        rows.run(kernel);
        expected.run(ColourKernels::scalar.*entry);
        return rows.equals(expected);
    };
    everyBuild<ColourKernels>([&](const ColourKernels& table) {
        Random random(1);
        everyLength([&](int width) {
            ASSERT_TRUE(compare(table.*entry, width, width % 4, random)) << width;
            ASSERT_TRUE(compare(table.past->*entry, width, width % 4, random)) << width << " past the caches";
        });
    });
    Random random(2);
    EXPECT_TRUE(compare(whole, 103, 0, random));
    EXPECT_TRUE(compare(multipleOfFour, 104, 0, random));
}

using Table = ColourKernels;

TEST(ColourKernels, YCbCrToPixels)
{
    check(&Table::yccToRgb, ownqj_YCbCrToRGB_JPEG_8u_P3C3R, ownqj_YCbCrToRGB_JPEG_8u_P3C3R_opt, {1, 1, 1, 3});
    check(&Table::yccToBgr, ownqj_YCbCrToBGR_JPEG_8u_P3C3R, ownqj_YCbCrToBGR_JPEG_8u_P3C3R_opt, {1, 1, 1, 3});
    check(&Table::yccToRgbPlanes, ownqj_YCbCrToRGB_JPEG_8u_P3R, ownqj_YCbCrToRGB_JPEG_8u_P3R_opt, {1, 1, 1, 1, 1, 1});
}

TEST(ColourKernels, YCbCrToPackedPixels)
{
    check(&Table::yccToRgb555, ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R_opt,
          {1, 1, 1, 2});
    check(&Table::yccToBgr555, ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R_opt,
          {1, 1, 1, 2});
    check(&Table::yccToRgb565, ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R_opt,
          {1, 1, 1, 2});
    check(&Table::yccToBgr565, ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R_opt,
          {1, 1, 1, 2});
}

TEST(ColourKernels, PixelsToYCbCr)
{
    check(&Table::rgbPlanesToYcc, ownqj_RGBToYCbCr_JPEG_8u_P3R, ownqj_RGBToYCbCr_JPEG_8u_P3R_opt, {1, 1, 1, 1, 1, 1});
    check(&Table::rgbToYcc, ownqj_RGBToYCbCr_JPEG_8u_C3P3R, ownqj_RGBToYCbCr_JPEG_8u_C3P3R_opt, {3, 1, 1, 1});
    check(&Table::bgrToYcc, ownqj_BGRToYCbCr_JPEG_8u_C3P3R, ownqj_BGRToYCbCr_JPEG_8u_C3P3R_opt, {3, 1, 1, 1});
}

TEST(ColourKernels, PackedPixelsToYCbCr)
{
    check(&Table::rgb555ToYcc, ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R_opt,
          {2, 1, 1, 1});
    check(&Table::bgr555ToYcc, ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R_opt,
          {2, 1, 1, 1});
    check(&Table::rgb565ToYcc, ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R_opt,
          {2, 1, 1, 1});
    check(&Table::bgr565ToYcc, ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R_opt,
          {2, 1, 1, 1});
}

TEST(ColourKernels, AllPackedPixels)
{
    constexpr int kWords = 1 << 16;
    std::vector<uint16_t> words(kWords);
    for (int i = 0; i < kWords; ++i) words[i] = uint16_t(i);
    for (auto entry : {&Table::rgb555ToYcc, &Table::bgr555ToYcc, &Table::rgb565ToYcc, &Table::bgr565ToYcc}) {
        auto convert = [&](const ColourKernels& table) {
            std::vector<uint8_t> planes(3 * kWords);
            uint8_t* y = planes.data();
            (table.*entry)(words.data(), y, y + kWords, y + 2 * kWords, kWords);
            return planes;
        };
        auto expected = convert(ColourKernels::scalar);
        everyBuild<ColourKernels>([&](const ColourKernels& table) { EXPECT_TRUE(convert(table) == expected); });
    }
}

TEST(ColourKernels, Inks)
{
    check(&Table::ycckToCmykPlanes, ownqj_YCCKToCMYK_JPEG_8u_P4R, ownqj_YCCKToCMYK_JPEG_8u_P4R_opt,
          {1, 1, 1, 1, 1, 1, 1, 1});
    check(&Table::ycckToCmyk, ownqj_YCCKToCMYK_JPEG_8u_P4C4R, ownqj_YCCKToCMYK_JPEG_8u_P4C4R_opt, {1, 1, 1, 1, 4});
    check(&Table::cmykPlanesToYcck, ownqj_CMYKToYCCK_JPEG_8u_P4R, ownqj_CMYKToYCCK_JPEG_8u_P4R_opt,
          {1, 1, 1, 1, 1, 1, 1, 1});
    check(&Table::cmykToYcck, ownqj_CMYKToYCCK_JPEG_8u_C4P4R, ownqj_CMYKToYCCK_JPEG_8u_C4P4R_opt, {4, 1, 1, 1, 1});
}

TEST(ColourKernels, PixelsToY)
{
    check(&Table::rgbPlanesToY, ownqj_RGBToY_JPEG_8u_P3C1R, ownqj_RGBToY_JPEG_8u_P3C1R_opt, {1, 1, 1, 1});
    check(&Table::rgbToY, ownqj_RGBToY_JPEG_8u_C3C1R, ownqj_RGBToY_JPEG_8u_C3C1R_opt, {3, 1});
    check(&Table::bgrToY, ownqj_BGRToY_JPEG_8u_C3C1R, ownqj_BGRToY_JPEG_8u_C3C1R_opt, {3, 1});
}

}
