// SPDX-License-Identifier: Apache-2.0
// Real files with known results: the folder QELJX_TEST_DATA (of the environment or the build) and its manifest.
#include <gtest/gtest.h>

#include <span>

#include "codec/base/compare.h"
#include "codec/base/error.h"
#include "codec/formats/pnm.h"
#include "codec/jpeg/decode/reader.h"
#include "manifest.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

Picture channelOf(const Picture& picture, int channel)
{
    Picture grey(picture.width(), picture.height(), ColourSpace::grey, 8);
    for (int y = 0; y < grey.height(); ++y)
        for (int x = 0; x < grey.width(); ++x) grey.row(y)[x] = picture.row(y)[picture.channels() * x + channel];
    return grey;
}

Picture pictureOf(const jpeg::SamplePlane& plane)
{
    Picture grey(plane.width, plane.height, ColourSpace::grey, 8);
    std::copy(plane.samples.begin(), plane.samples.end(), grey.row(0));
    return grey;
}

class Check : public ManifestRow {
public:
    using ManifestRow::ManifestRow;

    void run() const
    {
        std::string check = text("check");
        if (check == "picture") return expectNearReference(decode());
        if (check == "cmyk_plane") return expectNearReference(channelOf(decode(), number("component")));
        if (check == "plane")
            return expectNearReference(pictureOf(jpeg::decodePlanes(file()).planes[number("component")]));
        if (check == "coefficients_sha256") return expectCoefficients();
        if (check == "picture_sha256") return expectPictureDigest();
        if (check == "error" || check == "no_crash")
            return expectDamage([&] { return jpeg::decode(file()).warnings.empty(); });
        ADD_FAILURE() << "unknown check " << check;
    }

private:
    Picture decode() const
    {
        jpeg::DecodeOptions options;
        for (const std::string& option : split(text("options"), ';'))
            if (option == "upsampling=replicate") options.upsampling = jpeg::Upsampling::replicate;
        jpeg::Decoded decoded = jpeg::decode(file(), options);
        EXPECT_EQ(decoded.picture.width(), number("width"));
        EXPECT_EQ(decoded.picture.height(), number("height"));
        return std::move(decoded.picture);
    }

    void expectCoefficients() const
    {
        jpeg::DecodedCoefficients decoded = jpeg::decodeCoefficients(file());
        const jpeg::Coefficients& component = decoded.components.at(number("component"));
        EXPECT_EQ(component.blocksAcross, number("width"));
        EXPECT_EQ(component.blocksDown, number("height"));
        expectDigest(asBytes(component.values, true, true));
    }

    void expectPictureDigest() const
    {
        Picture picture = decode();
        size_t samples = picture.sizeInBytes() / picture.bytesPerSample();
        expectDigest(picture.precision() > 8 ? asBytes(std::span(picture.row<uint16_t>(0), samples), true)
                                             : asBytes(std::span(picture.row(0), samples), false));
    }
};

class JpegManifest : public testing::TestWithParam<const char*> {};

TEST_P(JpegManifest, EveryCheckHolds)
{
    if (!hasTestData()) GTEST_SKIP() << "no test data in " << dataFolder();
    RecordProperty("checks", runGroup<Check>(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Groups, JpegManifest, testing::Values("jpeg", "jpeg_field", "jpeg_damaged", "jpeg_lossless"),
                         [](const auto& group) { return std::string(group.param); });

}
