// SPDX-License-Identifier: Apache-2.0
// From components to pictures: palettes, the meaning of channels, up-sampling, colour spaces.
#include "codec/j2k/decode/channels.h"

#include <gtest/gtest.h>

#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;
using Values = std::vector<int>;

// A component that covers the area, with these samples row by row.
j2k::Samples component(const j2k::Rect& area, uint32_t dx, uint32_t dy, const Values& values, int precision = 8,
                       bool isSigned = false)
{
    j2k::Samples samples = {precision, isSigned, dx, dy, j2k::subsampled(area, dx, dy), {}};
    samples.plane = {samples.rect.width(), samples.rect.height(), j2k::Plane<int32_t>::Fill::none};
    for (size_t i = 0; i < values.size(); ++i)
        samples.plane.row(i / samples.rect.width())[i % samples.rect.width()] = values[i];
    return samples;
}

// Of one row that fills the area.
j2k::Samples row(const Values& values, int precision = 8, bool isSigned = false)
{
    return component({0, 0, uint32_t(values.size()), 1}, 1, 1, values, precision, isSigned);
}

template <class... Samples> j2k::Image imageOf(Samples... samples)
{
    j2k::Image image;
    (image.components.push_back(std::move(samples)), ...);
    return image;
}

j2k::Jp2File jp2Of(uint32_t space)
{
    j2k::Jp2File jp2;
    jp2.colours.push_back({j2k::Jp2Colour::kEnumerated, space, {}});
    return jp2;
}

void expectPicture(const j2k::Image& image, const j2k::Rect& area, const std::optional<j2k::Jp2File>& jp2,
                   ColourSpace space, int precision, const Values& expected, size_t notes = 0, bool hasAlpha = false)
{
    Warnings said;
    Picture picture = j2k::pictureOf(image, area, 0, jp2, said);
    EXPECT_EQ(picture.space(), space);
    EXPECT_EQ(picture.hasAlpha(), hasAlpha);
    EXPECT_EQ(picture.precision(), precision);
    Values values;
    for (size_t i = 0; i < picture.sizeInBytes() / size_t(picture.bytesPerSample()); ++i)
        values.push_back(sampleAt(picture, i));
    EXPECT_EQ(values, expected);
    EXPECT_EQ(said.size(), notes);
}

TEST(J2kChannels, BareCodestreamsByTheirNumber)
{
    const j2k::Rect area = {0, 0, 2, 1};
    const Values a = {1, 2}, b = {3, 4}, c = {5, 6}, d = {7, 8}, rgb = {1, 3, 5, 2, 4, 6};
    expectPicture(imageOf(row(a)), area, {}, ColourSpace::grey, 8, a);
    expectPicture(imageOf(row(a), row(b)), area, {}, ColourSpace::grey, 8, a, 1);
    expectPicture(imageOf(row(a), row(b), row(c)), area, {}, ColourSpace::rgb, 8, rgb);
    j2k::Image four = imageOf(row(a), row(b), row(c), row(d));
    expectPicture(four, area, {}, ColourSpace::rgb, 8, rgb, 1);
    expectPicture(four, area, jp2Of(j2k::Jp2Colour::kCmyk), ColourSpace::cmyk, 8, {1, 3, 5, 7, 2, 4, 6, 8});
}

TEST(J2kChannels, DefinitionsOrderColoursAndNameOpacity)
{
    const j2k::Rect area = {0, 0, 1, 1};
    j2k::Jp2File jp2 = jp2Of(j2k::Jp2Colour::kSrgb);
    jp2.definitions = {{0, j2k::Jp2Definition::kOpacity, 0}, {1, 0, 3}, {2, 0, 2}, {3, 0, 1}};
    j2k::Image image = imageOf(row({9}), row({3}), row({2}), row({1}));
    expectPicture(image, area, jp2, ColourSpace::rgb, 8, {1, 2, 3, 9}, 0, true);
    // Colours that are multiplied by the opacity, 200, are divided again, and kept within their range.
    jp2.definitions[0].kind = j2k::Jp2Definition::kPremultipliedOpacity;
    expectPicture(imageOf(row({200}), row({0}), row({250}), row({100})), area, jp2, ColourSpace::rgb, 8,
                  {128, 255, 0, 200}, 1, true);
    // Opacity of one colour, or without a colour, is none of the picture.
    jp2.definitions[0].association = 1;
    expectPicture(image, area, jp2, ColourSpace::rgb, 8, {1, 2, 3}, 1);
    jp2 = jp2Of(j2k::Jp2Colour::kGrey);
    jp2.definitions = {{0, j2k::Jp2Definition::kOpacity, 0}};
    expectPicture(imageOf(row({9})), area, jp2, ColourSpace::grey, 8, {9});
    // A palette's column, and chrominance.
    jp2.definitions = {{0, 0, 1}, {1, j2k::Jp2Definition::kOpacity, 0}};
    jp2.palette = j2k::Jp2Palette{2, {{8, false}, {4, false}}, {10, 15, 30, 5}};
    jp2.channels = {{0, 0}, {0, 1}};
    expectPicture(imageOf(row({1})), area, jp2, ColourSpace::grey, 8, {30, 85}, 0, true);
    jp2 = jp2Of(j2k::Jp2Colour::kSycc);
    jp2.definitions = {{0, 0, 1}, {1, 0, 2}, {2, 0, 3}, {3, j2k::Jp2Definition::kOpacity, 0}};
    expectPicture(imageOf(row({76, 76}), row({85, 85}), row({255, 255}), row({1, 2})), {0, 0, 2, 1}, jp2,
                  ColourSpace::rgb, 8, {254, 0, 0, 1, 254, 0, 0, 2}, 0, true);
}

TEST(J2kChannels, PrecisionAndSign)
{
    const j2k::Rect area = {0, 0, 2, 1};
    expectPicture(imageOf(row({-2048, 2047}, 12, true)), area, {}, ColourSpace::grey, 12, {0, 4095});
    expectPicture(imageOf(row({0, (1 << 20) - 1}, 20)), area, {}, ColourSpace::grey, 16, {0, 65535}, 1);
    // The deepest one decides.
    expectPicture(imageOf(row({0, 31}, 5), row({-8, 7}, 4, true), row({0, 3}, 2)), area, {}, ColourSpace::rgb, 5,
                  {0, 0, 0, 31, 31, 31});
}

TEST(J2kChannels, PalettesMapOneComponentToColours)
{
    const j2k::Rect area = {0, 0, 3, 1};
    j2k::Jp2File jp2 = jp2Of(j2k::Jp2Colour::kSrgb);
    jp2.palette = j2k::Jp2Palette{2, {{8, false}, {4, false}, {8, false}}, {10, 15, 30, 40, 0, 60}};
    jp2.channels = {{0, 2}, {0, 1}, {0, 0}};
    // The index 2 is beyond the palette.
    expectPicture(imageOf(row({0, 1, 2}, 2)), area, jp2, ColourSpace::rgb, 8, {30, 255, 10, 60, 0, 40, 60, 0, 40});
}

TEST(J2kChannels, SubsampledComponentsAreReplicated)
{
    // The columns 3 to 6 of the grid; the second component has those of 4 and 6, and none before.
    const j2k::Rect area = {3, 1, 7, 3};
    j2k::Image image = imageOf(component(area, 1, 1, {0, 1, 2, 3, 4, 5, 6, 7}), component(area, 2, 2, {10, 20}),
                               component(area, 1, 2, {50, 60, 70, 80}));
    expectPicture(image, area, jp2Of(j2k::Jp2Colour::kSrgb), ColourSpace::rgb, 8,
                  {0, 10, 50, 1, 10, 60, 2, 10, 70, 3, 20, 80, 4, 10, 50, 5, 10, 60, 6, 10, 70, 7, 20, 80});
    // All alike: no need for more pixels than there are.
    auto small = [&] { return component(area, 2, 2, {1, 2}); };
    expectPicture(imageOf(small(), small(), small()), area, {}, ColourSpace::rgb, 8, {1, 1, 1, 2, 2, 2});
}

TEST(J2kChannels, LuminanceAndChrominanceBecomeRgb)
{
    const j2k::Rect area = {0, 0, 2, 1};
    j2k::Image image = imageOf(row({76, 76}), component(area, 2, 1, {85}), component(area, 2, 1, {255}));
    for (auto& jp2 : {std::optional<j2k::Jp2File>(jp2Of(j2k::Jp2Colour::kSycc)), std::optional<j2k::Jp2File>()})
        expectPicture(image, area, jp2, ColourSpace::rgb, 8, {254, 0, 0, 254, 0, 0});
}

}
