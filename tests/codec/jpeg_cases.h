// SPDX-License-Identifier: Apache-2.0
// What JPEG files can be like: options, and a name for each.
#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "codec/base/picture.h"
#include "codec/jpeg/encode/writer.h"

namespace qel::test {

struct JpegCase {
    std::string name;
    codec::ColourSpace space;
    codec::jpeg::EncodeOptions options;

    friend void PrintTo(const JpegCase& tested, std::ostream* out) { *out << tested.name; }
};

// One case for each way to store a picture.
inline std::vector<JpegCase> jpegCases()
{
    using namespace codec;
    using enum ColourSpace;
    constexpr jpeg::Samplings kLumaHalved = {{{1, 1}, {2, 2}, {2, 1}, {1, 1}}};
    constexpr jpeg::Samplings kMixed = {{{2, 2}, {1, 2}, {2, 1}, {1, 1}}};
    std::vector<JpegCase> cases = {{"grey", grey, {}},
                                   {"grey_from_rgb", rgb, {.target = jpeg::Target::grey}},
                                   {"rgb", rgb, {.target = jpeg::Target::rgb}},
                                   {"cmyk", cmyk, {.target = jpeg::Target::cmyk}},
                                   {"ycck_420", cmyk, {.sampling = jpeg::kSampling420}},
                                   {"ycck_444", cmyk, {.sampling = jpeg::kSampling444}},
                                   {"444", rgb, {.sampling = jpeg::kSampling444}},
                                   {"422", rgb, {.sampling = jpeg::kSampling422}},
                                   {"440", rgb, {.sampling = jpeg::kSampling440}},
                                   {"420", rgb, {.sampling = jpeg::kSampling420}},
                                   {"luma_halved", rgb, {.sampling = kLumaHalved}},
                                   {"mixed", rgb, {.sampling = kMixed}}};
    for (int i = 6; i <= 9; ++i) {
        auto add = [&](const char* what, auto change) {
            JpegCase changed = cases[i];
            changed.name += what;
            change(changed.options);
            cases.push_back(changed);
        };
        add("_restart_5", [](jpeg::EncodeOptions& o) { o.restartInterval = 5; });
        add("_restart_row", [](jpeg::EncodeOptions& o) { o.restartRows = 1; });
        add("_separate", [](jpeg::EncodeOptions& o) { o.interleaved = false; });
        add("_separate_restart", [](jpeg::EncodeOptions& o) { o.interleaved = false, o.restartInterval = 3; });
        add("_optimised", [](jpeg::EncodeOptions& o) { o.optimiseTables = true; });
        add("_optimised_separate", [](jpeg::EncodeOptions& o) { o.optimiseTables = true, o.interleaved = false; });
        add("_optimised_restart", [](jpeg::EncodeOptions& o) { o.optimiseTables = true, o.restartInterval = 7; });
        for (int quality : {1, 10, 50, 75, 100})
            add(("_q" + std::to_string(quality)).c_str(), [&](jpeg::EncodeOptions& o) { o.quality = quality; });
        add("_q1_wide", [](jpeg::EncodeOptions& o) { o.quality = 1, o.wideQuantizers = true; });
    }
    // Chrominance first, bits in many scans, and bands that begin and end anywhere.
    const jpeg::ScanScript deep = {
        {{0, 1, 2}, 0, 0, 0, 3}, {{0}, 1, 63, 0, 3}, {{2}, 1, 2, 0, 2},  {{0, 1, 2}, 0, 0, 3, 2}, {{2}, 1, 1, 2, 1},
        {{0}, 1, 63, 3, 2},      {{2}, 3, 63, 0, 0}, {{1}, 1, 63, 0, 0}, {{0, 1, 2}, 0, 0, 2, 1}, {{0}, 1, 63, 2, 1},
        {{0, 1, 2}, 0, 0, 1, 0}, {{0}, 1, 63, 1, 0}, {{2}, 2, 2, 2, 1},  {{2}, 1, 2, 1, 0}};
    const jpeg::ScanScript narrow = {{{1}, 0, 0, 0, 0},  {{0, 2}, 0, 0, 0, 1}, {{0}, 63, 63, 0, 0},  {{0}, 1, 1, 0, 2},
                                     {{0}, 2, 62, 0, 1}, {{0}, 1, 1, 2, 1},    {{0, 2}, 0, 0, 1, 0}, {{0}, 1, 62, 1, 0},
                                     {{1}, 1, 30, 0, 0}, {{1}, 31, 63, 0, 0},  {{2}, 1, 63, 0, 0}};
    const std::pair<const char*, jpeg::ScanScript> scripts[] = {
        {"deep", deep}, {"narrow", narrow}, {"two_scans", {{{0, 1}}, {{2}}}}};
    for (auto& [name, script] : scripts)
        for (auto& [sampling, factors] : {std::pair("444", jpeg::kSampling444), std::pair("420", jpeg::kSampling420)})
            cases.push_back(
                {std::string("script_") + name + "_" + sampling, rgb, {.sampling = factors, .scans = script}});
    for (int i = 0; i < 12; ++i) {
        JpegCase progressive = cases[i];
        progressive.name += "_progressive";
        progressive.options.progressive = true;
        cases.push_back(progressive);
        progressive.name += "_restart";
        progressive.options.restartInterval = 4;
        cases.push_back(progressive);
    }
    return cases;
}

}
