// SPDX-License-Identifier: Apache-2.0
// Sampling factors of 1 to 4 in every proportion, also those that no encoder at hand writes.
#include "codec/jpeg/encode/writer.h"
#include "jpeg_files.h"

namespace {

using namespace qel::codec;
using namespace qel::test;
namespace marker = jpeg::marker;

struct Factors {
    int h[3], v[3];

    int width(int c, int all) const { return (all * h[c] + std::ranges::max(h) - 1) / std::ranges::max(h); }
    int height(int c, int all) const { return (all * v[c] + std::ranges::max(v) - 1) / std::ranges::max(v); }
};

void append(File& file, const File& more) { file.insert(file.end(), more.begin(), more.end()); }

// An RGB file with a scan for each component, put together from grey files, whose tables are the same.
File joined(const std::vector<File>& grey, const Factors& factors, int width, int height)
{
    size_t frame = markerAt(grey[0], marker::kSof0), scan = markerAt(grey[0], marker::kSos);
    size_t behindFrame = jpeg::readSegment(grey[0], frame).end;
    File file(grey[0].begin(), grey[0].begin() + ptrdiff_t(frame));
    append(file, {0xFF, marker::kSof0, 0, 17, 8, uint8_t(height >> 8), uint8_t(height), uint8_t(width >> 8),
                  uint8_t(width), 3});
    for (int c = 0; c < 3; ++c) append(file, {uint8_t("RGB"[c]), uint8_t(factors.h[c] << 4 | factors.v[c]), 0});
    file.insert(file.end(), grey[0].begin() + ptrdiff_t(behindFrame), grey[0].begin() + ptrdiff_t(scan));
    for (size_t c = 0; c < 3; ++c) {
        size_t data = jpeg::readSegment(grey[c], markerAt(grey[c], marker::kSos)).end;
        append(file, {0xFF, marker::kSos, 0, 8, 1, uint8_t("RGB"[c]), 0, 0, 63, 0});
        file.insert(file.end(), grey[c].begin() + ptrdiff_t(data), grey[c].end() - 2);
    }
    append(file, {0xFF, marker::kEoi});
    return withoutSegments(file, marker::kApp0); // JFIF says YCbCr
}

TEST(JpegFactors, ComponentsAreReplicatedInAnyProportion)
{
    const Factors table[] = {{{3, 2, 1}, {1, 1, 1}}, {{1, 1, 1}, {3, 2, 1}}, {{4, 3, 1}, {2, 4, 3}},
                             {{2, 3, 2}, {1, 3, 2}}, {{4, 1, 4}, {1, 1, 1}}, {{1, 4, 1}, {4, 1, 4}}};
    for (auto [width, height] : {std::pair(1, 1), {17, 5}, {63, 70}, {601, 340}})
        for (const Factors& factors : table) {
            std::vector<File> files;
            std::vector<Picture> planes;
            for (int c = 0; c < 3; ++c) {
                int across = factors.width(c, width), down = factors.height(c, height);
                files.push_back(jpeg::encode(drawnPicture(across, down, ColourSpace::grey, 8)));
                planes.push_back(jpeg::decode(files.back()).picture);
            }
            jpeg::Decoded decoded =
                jpeg::decode(joined(files, factors, width, height), {.upsampling = jpeg::Upsampling::replicate});
            EXPECT_TRUE(decoded.warnings.empty());
            ASSERT_EQ(decoded.picture.width(), width);
            int wrong = 0, maxH = std::ranges::max(factors.h), maxV = std::ranges::max(factors.v);
            for (int y = 0; y < height; ++y)
                for (int i = 0; i < 3 * width; ++i) {
                    int c = i % 3, x = i / 3 * factors.h[c] / maxH;
                    wrong += decoded.picture.row(y)[i] != planes[size_t(c)].row(y * factors.v[c] / maxV)[x];
                }
            EXPECT_EQ(wrong, 0) << width << " x " << height << ", " << factors.h[0] << factors.v[0] << ' '
                                << factors.h[1] << factors.v[1] << ' ' << factors.h[2] << factors.v[2];
        }
}

}
