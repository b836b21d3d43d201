// Real files with known results: the folder QELJX_TEST_DATA (of the environment or the build) and its manifest.
#include <gtest/gtest.h>

#include <chrono>

#include "codec/compare.h"
#include "codec/error.h"
#include "codec/file_io.h"
#include "codec/jpeg_reader.h"
#include "codec/pnm.h"
#include "manifest.h"

namespace {

namespace fs = std::filesystem;
using namespace qel::codec;
using namespace qel::test;

// 16-bit values as bytes, in the order that the manifest asks for.
template <class T> std::vector<uint8_t> asBytes(const T* values, size_t count, bool lowFirst)
{
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < count; ++i) {
        uint8_t low = uint8_t(values[i]), high = uint8_t(uint16_t(values[i]) >> 8);
        bytes.push_back(lowFirst ? low : high);
        bytes.push_back(lowFirst ? high : low);
    }
    return bytes;
}

Picture channelOf(const Picture& picture, int channel)
{
    Picture grey(picture.width(), picture.height(), ColourSpace::grey, 8);
    for (int y = 0; y < grey.height(); ++y)
        for (int x = 0; x < grey.width(); ++x) grey.row(y)[x] = picture.row(y)[picture.channels() * x + channel];
    return grey;
}

Picture pictureOf(const JpegPlane& plane)
{
    Picture grey(plane.width, plane.height, ColourSpace::grey, 8);
    std::copy(plane.samples.begin(), plane.samples.end(), grey.row(0));
    return grey;
}

class Check {
public:
    explicit Check(const Row& row) : row_(row), file_(readFile(pathOf("file"))) {}

    // Files that the decoder is not made for yet say so themselves, in their frame header.
    bool covered() const
    {
        if (text("check") == "error" || text("check") == "no_crash") return true;
        JpegInfo info = readJpegInfo(file_);
        return info.process == JpegProcess::lossless || (info.precision == 8 && info.process != JpegProcess::other);
    }

    void run() const
    {
        std::string check = text("check");
        if (check == "picture") return expectWithinLimits(decode());
        if (check == "cmyk_plane") return expectWithinLimits(channelOf(decode(), number("component")));
        if (check == "plane") return expectWithinLimits(pictureOf(decodeJpegPlanes(file_).planes[number("component")]));
        if (check == "coefficients_sha256") return expectCoefficients();
        if (check == "picture_sha256") return expectPictureDigest();
        if (check == "error")
            EXPECT_FALSE(claimsToBeWhole());
        else if (check == "no_crash")
            claimsToBeWhole();
        else
            ADD_FAILURE() << "unknown check " << check;
    }

private:
    std::string text(const char* column) const { return row_.at(column); }
    int number(const char* column) const { return std::stoi(text(column)); }
    std::string pathOf(const char* column) const { return (dataFolder() / text(column)).string(); }

    Picture decode() const
    {
        JpegDecodeOptions options;
        for (const std::string& option : split(text("options"), ';'))
            if (option == "upsampling=replicate") options.upsampling = JpegUpsampling::replicate;
        DecodedJpeg decoded = decodeJpeg(file_, options);
        EXPECT_EQ(decoded.picture.width(), number("width"));
        EXPECT_EQ(decoded.picture.height(), number("height"));
        return std::move(decoded.picture);
    }

    void expectWithinLimits(const Picture& picture) const
    {
        Difference d = compare(picture, readPnm(readFile(pathOf("reference")))).whole;
        EXPECT_LE(d.largestError, std::stod(text("max_error")));
        EXPECT_LE(d.meanSquaredError, std::stod(text("max_mse")));
    }

    void expectCoefficients() const
    {
        DecodedJpegCoefficients decoded = decodeJpegCoefficients(file_);
        const JpegCoefficients& component = decoded.components.at(number("component"));
        EXPECT_EQ(component.blocksAcross, number("width"));
        EXPECT_EQ(component.blocksDown, number("height"));
        EXPECT_EQ(digest(asBytes(component.values.data(), component.values.size(), true)), text("sha256"));
    }

    void expectPictureDigest() const
    {
        Picture picture = decode();
        size_t samples = picture.sizeInBytes() / picture.bytesPerSample();
        EXPECT_EQ(digest(picture.precision() > 8 ? asBytes(picture.row<uint16_t>(0), samples, false)
                                                 : std::vector<uint8_t>(picture.row(0), picture.row(0) + samples)),
                  text("sha256"));
    }

    // Neither an error nor a picture with warnings.
    bool claimsToBeWhole() const
    {
        try {
            return decodeJpeg(file_).warnings.empty();
        } catch (const CodecError&) {
            return false;
        }
    }

    Row row_;
    std::vector<uint8_t> file_;
};

class JpegManifest : public testing::TestWithParam<const char*> {};

TEST_P(JpegManifest, EveryCheckHolds)
{
    if (!fs::exists(dataFolder() / "manifest.csv")) GTEST_SKIP() << "no test data in " << dataFolder();
    int notCovered = 0, done = 0;
    for (const Row& row : rowsOf(GetParam())) {
        SCOPED_TRACE(row.at("id"));
        auto start = std::chrono::steady_clock::now();
        try {
            Check check(row);
            if (!check.covered()) {
                ++notCovered;
                continue;
            }
            check.run();
        } catch (const std::exception& error) {
            ADD_FAILURE() << error.what();
        }
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
        ++done;
    }
    std::cout << done << " checks, " << notCovered << " of files not covered yet\n";
    RecordProperty("checks", done);
    RecordProperty("not_covered_yet", notCovered);
}

INSTANTIATE_TEST_SUITE_P(Groups, JpegManifest, testing::Values("jpeg", "jpeg_field", "jpeg_damaged", "jpeg_lossless"),
                         [](const auto& group) { return std::string(group.param); });

}
