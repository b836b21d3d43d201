// What JPEG files can be like: options, a name for each, and a picture that has flat parts, slopes, edges and noise.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>
#include <vector>

#include "codec/jpeg_writer.h"
#include "codec/picture.h"
#include "random.h"

namespace qel::test {

inline codec::Picture paintedPicture(int width, int height, codec::ColourSpace space)
{
    codec::Picture picture(width, height, space, 8);
    Random random(unsigned(width * 31 + height));
    int channels = picture.channels();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                double value = 128 + 60 * std::sin(x * (0.05 + 0.02 * c)) + 50 * std::cos(y * 0.07 + c);
                if (x / 23 % 3 == 1) value += y / 17 % 2 ? 70 : -40;
                if (y / 29 % 3 == 2) value += random.between(-30, 30);
                picture.row(y)[channels * x + c] = uint8_t(std::clamp(value, 0.0, 255.0));
            }
    return picture;
}

struct JpegCase {
    std::string name;
    codec::ColourSpace space;
    codec::JpegEncodeOptions options;

    friend void PrintTo(const JpegCase& tested, std::ostream* out) { *out << tested.name; }
};

// One case for each way to store a picture.
inline std::vector<JpegCase> jpegCases()
{
    using namespace codec;
    using enum ColourSpace;
    constexpr JpegSamplings kLumaHalved = {{{1, 1}, {2, 2}, {2, 1}, {1, 1}}};
    constexpr JpegSamplings kMixed = {{{2, 2}, {1, 2}, {2, 1}, {1, 1}}};
    std::vector<JpegCase> cases = {{"grey", grey, {}},
                                   {"grey_from_rgb", rgb, {.target = JpegTarget::grey}},
                                   {"rgb", rgb, {.target = JpegTarget::rgb}},
                                   {"cmyk", cmyk, {.target = JpegTarget::cmyk}},
                                   {"ycck_420", cmyk, {.sampling = kSampling420}},
                                   {"ycck_444", cmyk, {.sampling = kSampling444}},
                                   {"444", rgb, {.sampling = kSampling444}},
                                   {"422", rgb, {.sampling = kSampling422}},
                                   {"440", rgb, {.sampling = kSampling440}},
                                   {"420", rgb, {.sampling = kSampling420}},
                                   {"luma_halved", rgb, {.sampling = kLumaHalved}},
                                   {"mixed", rgb, {.sampling = kMixed}}};
    for (int i = 6; i <= 9; ++i) {
        auto add = [&](const char* what, auto change) {
            JpegCase changed = cases[i];
            changed.name += what;
            change(changed.options);
            cases.push_back(changed);
        };
        add("_restart_5", [](JpegEncodeOptions& o) { o.restartInterval = 5; });
        add("_restart_row", [](JpegEncodeOptions& o) { o.restartRows = 1; });
        add("_separate", [](JpegEncodeOptions& o) { o.interleaved = false; });
        add("_separate_restart", [](JpegEncodeOptions& o) { o.interleaved = false, o.restartInterval = 3; });
        add("_optimised", [](JpegEncodeOptions& o) { o.optimiseTables = true; });
        add("_optimised_separate", [](JpegEncodeOptions& o) { o.optimiseTables = true, o.interleaved = false; });
        add("_optimised_restart", [](JpegEncodeOptions& o) { o.optimiseTables = true, o.restartInterval = 7; });
        for (int quality : {1, 10, 50, 75, 100})
            add(("_q" + std::to_string(quality)).c_str(), [&](JpegEncodeOptions& o) { o.quality = quality; });
        add("_q1_wide", [](JpegEncodeOptions& o) { o.quality = 1, o.wideQuantizers = true; });
    }
    return cases;
}

}
