// SPDX-License-Identifier: Apache-2.0
// JP2 boxes, made by hand.
#include "codec/j2k/boxes.h"

#include "codec/j2k/decode/file.h"
#include "openjpeg_peer.h"
#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;
using File = std::vector<uint8_t>;

File operator+(File a, const File& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

File number(uint64_t value, int bytes)
{
    File file;
    while (bytes-- > 0) file.push_back(uint8_t(value >> 8 * bytes));
    return file;
}

File box(const char* type, const File& contents)
{
    return number(contents.size() + 8, 4) + File(type, type + 4) + contents;
}

const File kBeginning = box("jP  ", {0x0D, 0x0A, 0x87, 0x0A}) + box("ftyp", number(0x6A703220, 4) + number(0, 8));
const File kThreeOf9x7 = box("ihdr", number(7, 4) + number(9, 4) + number(3, 2) + File{7, 7, 0, 0});
const File kSrgb = box("colr", File{1, 0, 0} + number(16, 4));
const File kStream = {1, 2, 3};

j2k::Jp2File readWith(const File& header)
{
    return j2k::readJp2(kBeginning + box("uuid", File(20)) + box("jp2h", header) + box("jp2c", kStream) +
                        box("xml ", {}));
}

// A length of 1 is followed by one of eight bytes, a length of 0 means all of the file.
TEST(Jp2Boxes, OtherLengths)
{
    File large = number(1, 4) + File{'j', 'p', '2', 'h'} + number(16 + kThreeOf9x7.size(), 8) + kThreeOf9x7;
    File toTheEnd = number(0, 4) + File{'j', 'p', '2', 'c'} + kStream;
    j2k::Jp2File jp2 = j2k::readJp2(kBeginning + large + toTheEnd);
    EXPECT_EQ(jp2.components, 3);
    EXPECT_EQ(jp2.codestreamEnd - jp2.codestreamBegin, 3u);
}

TEST(Jp2Boxes, HeaderWithPalette)
{
    File palette = number(2, 2) + File{3, 7, 0x80 | 4, 11} + File{200, 0x1F, 0x0A, 0xBC} + File{1, 15, 0, 2};
    File mapping = {0, 2, 1, 2, 0, 0, 0, 0, 0, 1, 1, 1};
    File definition = number(3, 2) + File{0, 0, 0, 0, 0, 1, 0, 1, 0, 1, 0, 0, 0, 2, 0xFF, 0xFF, 0xFF, 0xFF};
    File header = kThreeOf9x7 + kSrgb + box("res ", {}) + box("pclr", palette) + box("cmap", mapping);
    j2k::Jp2File jp2 = readWith(header + box("cdef", definition));
    EXPECT_EQ(jp2.warnings, Warnings());
    EXPECT_EQ(jp2.width, 9u);
    EXPECT_EQ(jp2.height, 7u);
    EXPECT_EQ(jp2.components, 3);
    EXPECT_EQ(jp2.depths, std::vector<int>{7});
    ASSERT_EQ(jp2.colours.size(), 1u);
    EXPECT_EQ(jp2.colours[0].space, uint32_t(j2k::Jp2Colour::kSrgb));
    ASSERT_TRUE(jp2.palette);
    EXPECT_EQ(jp2.palette->entries, 2);
    EXPECT_EQ(jp2.palette->value(0, 0), 200);
    EXPECT_EQ(jp2.palette->value(0, 1), -1);
    EXPECT_EQ(jp2.palette->value(0, 2), 0xABC);
    EXPECT_EQ(jp2.palette->value(1, 1), 15);
    ASSERT_EQ(jp2.channels.size(), 3u);
    EXPECT_EQ(jp2.channels[0].component, 2);
    EXPECT_EQ(jp2.channels[0].column, 2);
    EXPECT_FALSE(jp2.channels[1].column);
    ASSERT_EQ(jp2.definitions.size(), 3u);
    EXPECT_EQ(jp2.definitions[1].kind, j2k::Jp2Definition::kOpacity);
    EXPECT_EQ(jp2.definitions[1].association, j2k::Jp2Definition::kWholePicture);
    EXPECT_EQ(jp2.definitions[2].kind, j2k::Jp2Definition::kUnspecified);
}

// Boxes that are damaged, and what does not fit the picture, are left out.
TEST(Jp2Boxes, DamageIsLeftOut)
{
    const struct {
        const char* what;
        File header;
        std::string warning; // how it begins
    } table[] = {
        {"size", box("ihdr", number(0, 8) + File{0, 3, 7, 7, 0, 0}), "image header box: a picture without samples"},
        {"compression", box("ihdr", number(1, 4) + number(1, 4) + File{0, 3, 7, 6, 0, 0}), "image header box: unknown"},
        {"colour", kThreeOf9x7 + box("colr", {1, 0}) + kSrgb, "colour box: too short"},
        {"cut", kThreeOf9x7 + number(99, 4) + File{'c', 'o', 'l', 'r'}, "a box reaches beyond"},
        {"short", kThreeOf9x7 + number(7, 4) + File{'c', 'o', 'l', 'r'}, "a box of 7 bytes"},
        {"rest", kThreeOf9x7 + File{0, 0, 1}, "box: too short"},
        {"no colours", kThreeOf9x7 + box("pclr", {0, 0, 1, 7}), "palette box: a palette without colours"},
        {"short palette", kThreeOf9x7 + box("pclr", {4, 0, 255, 7}), "palette box: too short"},
        {"unmapped", kThreeOf9x7 + box("pclr", {0, 1, 1, 7, 9}), "the palette and the mapping"},
        {"column", kThreeOf9x7 + box("pclr", {0, 1, 1, 7, 9}) + box("cmap", {0, 0, 1, 1}), "the palette and the"},
        {"component", kThreeOf9x7 + box("pclr", {0, 1, 1, 7, 9}) + box("cmap", {0, 3, 1, 0}), "the palette and the"},
        {"channel", kThreeOf9x7 + box("cdef", {0, 1, 0, 3, 0, 0, 0, 1}), "the channel definition is about channels"},
        {"twice", kThreeOf9x7 + box("cdef", {0, 2, 0, 1, 0, 0, 0, 1, 0, 1, 0, 1, 0, 0}),
         "the channel definition is about a"},
        {"count", kThreeOf9x7 + box("cdef", {0, 9, 0, 1, 0, 0, 0, 1}), "channel definition box: too short"},
    };
    for (auto& row : table) {
        j2k::Jp2File jp2 = readWith(row.header);
        ASSERT_FALSE(jp2.warnings.empty()) << row.what;
        EXPECT_EQ(jp2.warnings[0].rfind(row.warning, 0), 0u) << row.what << ": " << jp2.warnings[0];
        EXPECT_FALSE(jp2.palette) << row.what;
        EXPECT_TRUE(jp2.definitions.empty()) << row.what;
        EXPECT_GT(jp2.codestreamEnd, jp2.codestreamBegin) << row.what;
    }
    EXPECT_EQ(readWith(table[2].header).colours.size(), 1u);
}

TEST(Jp2Boxes, FilesWithoutACodestreamAreRefused)
{
    const std::pair<File, const char*> table[] = {
        {kStream, "not a JP2 file (at byte 0)"},
        {kBeginning, "the file holds no codestream (at byte 32)"},
        {kBeginning + number(50, 4) + File{'j', 'p', '2', 'h'}, "the file holds no codestream (at byte 40)"},
        {kBeginning + number(5, 4) + File{'j', 'p', '2', 'c'}, "a box of 5 bytes (at byte 32)"},
        {kBeginning + File{0, 0}, "box: too short (at byte 32)"},
    };
    for (auto& row : table) EXPECT_EQ(errorOf([&] { j2k::readJp2(row.first); }), row.second);
}

TEST(Jp2Boxes, DisagreementWithTheCodestreamIsTold)
{
    File stream = openJpegEncode({.width = 10, .height = 7, .levels = 0});
    j2k::File file = j2k::open(kBeginning + box("jp2h", kThreeOf9x7) + box("jp2c", stream));
    EXPECT_EQ(file.warnings, (Warnings{"the image header box tells another size, 9 x 7",
                                       "the image header box tells another number of components, 3"}));
}

}
