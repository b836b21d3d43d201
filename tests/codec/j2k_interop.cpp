// SPDX-License-Identifier: Apache-2.0
// Files of an independent encoder are decoded as its decoder does.
#include <algorithm>

#include "codec/base/compare.h"
#include "codec/j2k/decode/reader.h"
#include "j2k_cases.h"
#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;
using File = std::vector<uint8_t>;

class J2kInterop : public testing::TestWithParam<OpenJpegCase> {
protected:
    // Samples of the reversible wavelet are the same.
    void expectAlike(const PgxPicture& ours, const PgxPicture& theirs)
    {
        ASSERT_EQ(ours.width, theirs.width);
        ASSERT_EQ(ours.height, theirs.height);
        ASSERT_EQ(ours.precision, theirs.precision);
        int largest = 0;
        for (size_t i = 0; i < ours.samples.size(); ++i)
            largest = std::max(largest, std::abs(ours.samples[i] - theirs.samples[i]));
        EXPECT_LE(largest, GetParam().isReversible ? 0 : 1);
    }
};

TEST_P(J2kInterop, DecodesLikeThePeer)
{
    const OpenJpegCase& tested = GetParam();
    File file = openJpegEncode(tested);
    // The peer takes another size for lower resolutions of a picture that does not begin at 0.
    int lowest = tested.x0 || tested.y0 ? 0 : std::min(tested.levels, 2);
    for (int reduce = 0; reduce <= lowest; ++reduce)
        for (int layers : {tested.layers, (tested.layers + 1) / 2}) {
            SCOPED_TRACE(testing::Message() << "reduce " << reduce << ", layers " << layers);
            auto theirs = openJpegComponents(file, reduce, layers);
            ASSERT_EQ(int(theirs.size()), tested.components);
            for (size_t c = 0; c < theirs.size(); ++c) {
                auto ours = j2k::decodeComponent(file, c, {.reduce = reduce, .layers = layers});
                EXPECT_EQ(ours.warnings, Warnings());
                expectAlike(ours.samples, theirs[c]);
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Cases, J2kInterop, testing::ValuesIn(openJpegCases()),
                         [](const auto& tested) { return tested.param.name; });

// Five levels, the component transform, and threads at work in each stage.
TEST(J2kPicture, IsThePeersPicture)
{
    const struct {
        bool isReversible;
        ColourSpace space;
        int precision;
    } table[] = {{true, ColourSpace::rgb, 8}, {false, ColourSpace::rgb, 8}, {false, ColourSpace::grey, 12}};
    for (auto& row : table) {
        Picture drawn = drawnPicture(700, 500, row.space, row.precision);
        bool isColour = row.space == ColourSpace::rgb;
        OpenJpegCase options = {.levels = 5, .isReversible = row.isReversible, .transformsComponents = isColour};
        options.isJp2 = isColour;
        options.ratio = row.isReversible ? 0.f : 20.f;
        File file = openJpegEncode(options, drawn);
        DecodedPicture decoded = j2k::decode(file);
        EXPECT_EQ(decoded.warnings, Warnings());
        if (row.isReversible) expectSame(decoded.picture, drawn);
        EXPECT_LE(compare(decoded.picture, openJpegDecode(file)).whole.largestError, row.isReversible ? 0 : 1);
    }
}

}
