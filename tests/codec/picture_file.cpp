// SPDX-License-Identifier: Apache-2.0
// Files as a whole: kinds by content and by name, output that appears only when it is whole, comparison.
#include "codec/formats/picture_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <limits>

#include "codec/base/compare.h"
#include "codec/base/file_io.h"
#include "pictures.h"

namespace {

namespace fs = std::filesystem;
using namespace qel::codec;
using namespace qel::test;

// A folder of its own for each test.
class PictureFile : public testing::Test {
protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "qelpic-test-XXXXXX").string();
        folder_ = mkdtemp(name.data());
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string path(const std::string& name) const { return (folder_ / name).string(); }
    size_t filesInFolder() const { return size_t(std::distance(fs::directory_iterator(folder_), {})); }

    fs::path folder_;
};

TEST_F(PictureFile, ExtensionsChooseTheFormat)
{
    const struct {
        const char* name;
        ColourSpace space;
        const char* start;
    } table[] = {
        {"a.pgm", ColourSpace::grey, "P5"}, {"a.ppm", ColourSpace::rgb, "P6"},  {"a.pnm", ColourSpace::grey, "P5"},
        {"a.pam", ColourSpace::grey, "P7"}, {"a.pnm", ColourSpace::cmyk, "P7"}, {"a.b.PNG", ColourSpace::rgb, "\x89P"},
    };
    for (auto& row : table) {
        Picture picture = randomPicture(9, 5, row.space, 8);
        storePicture(picture, path(row.name));
        std::vector<uint8_t> file = readFile(path(row.name));
        EXPECT_EQ(std::string(file.begin(), file.begin() + 2), row.start);
        expectSame(loadPicture(file).picture, picture);
    }
}

TEST_F(PictureFile, WhatDoesNotFitIsRefusedAndLeavesNothing)
{
    EXPECT_EQ(errorOf([&] { storePicture(randomPicture(2, 2, ColourSpace::cmyk, 8), path("a.png")); }),
              "a CMYK picture fits .pam files only");
    EXPECT_EQ(errorOf([&] { storePicture(randomPicture(2, 2, ColourSpace::rgb, 8), path("a")); }),
              "the name does not end in .pgm, .ppm, .pnm, .pam, .pgx or .png");
    EXPECT_EQ(filesInFolder(), 0u);
}

TEST_F(PictureFile, GreyBecomesRgbForPpm)
{
    storePicture(randomPicture(5, 4, ColourSpace::grey, 12), path("a.ppm"));
    Picture picture = loadPicture(readFile(path("a.ppm"))).picture;
    ASSERT_EQ(picture.space(), ColourSpace::rgb);
    Picture grey = randomPicture(5, 4, ColourSpace::grey, 12);
    for (int i = 0; i < 60; ++i) EXPECT_EQ(picture.row<uint16_t>(0)[i], grey.row<uint16_t>(0)[i / 3]);
}

TEST_F(PictureFile, OutputReplacesOnlyWhenWhole)
{
    std::ofstream(path("out")) << "old";
    chmod(path("out").c_str(), 0640);
    fs::create_symlink("out", path("link"));
    {
        OutputFile file(path("link"));
        file.write(bytesOf("half"));
        EXPECT_EQ(filesInFolder(), 3u);
    }
    EXPECT_EQ(filesInFolder(), 2u);
    EXPECT_EQ(readFile(path("out")).size(), 3u);

    OutputFile file(path("link"));
    file.write(bytesOf("all of it"));
    file.commit();
    EXPECT_EQ(readFile(path("out")).size(), 9u);
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(fs::status(path("out")).permissions(), fs::perms(0640));
    EXPECT_EQ(filesInFolder(), 2u);
}

TEST_F(PictureFile, AFullDiskIsNoticed)
{
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no disk that is always full";
    OutputFile file("/dev/full");
    file.write(bytesOf("x"));
    EXPECT_EQ(errorOf([&] { file.commit(); }), "cannot be written: No space left on device");
}

TEST(Compare, ErrorsAndPsnr)
{
    Picture a = randomPicture(10, 10, ColourSpace::rgb, 8), b = randomPicture(10, 10, ColourSpace::rgb, 8);
    EXPECT_EQ(compare(a, b).whole.largestError, 0);
    EXPECT_EQ(compare(a, b).whole.psnr(8), std::numeric_limits<double>::infinity());
    a.row(3)[4] = 10; // green
    b.row(3)[4] = 40;
    Comparison result = compare(a, b);
    EXPECT_EQ(result.channels[0].largestError, 0);
    EXPECT_EQ(result.channels[1].largestError, 30);
    EXPECT_DOUBLE_EQ(result.channels[1].meanSquaredError, 9);
    EXPECT_DOUBLE_EQ(result.whole.meanSquaredError, 3);
    EXPECT_NEAR(result.whole.psnr(8), 43.3596, 1e-4);
    Picture one(1, 1, ColourSpace::grey, 16), other(1, 1, ColourSpace::grey, 16);
    *one.row<uint16_t>(0) = 65535;
    *other.row<uint16_t>(0) = 0;
    EXPECT_EQ(compare(one, other).whole.largestError, 65535);
    EXPECT_DOUBLE_EQ(compare(one, other).whole.psnr(16), 0);
    EXPECT_EQ(errorOf([&] { compare(a, one); }),
              "the pictures differ in kind: 10 x 10 RGB of 8 bits, 1 x 1 grey of 16 bits");
}

}
