// SPDX-License-Identifier: Apache-2.0
// qelpic compare: PSNR, largest error and structural similarity of two pictures.
#include "codec/base/compare.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "codec/base/convert.h"
#include "codec/base/file_io.h"
#include "codec/base/similarity.h"
#include "codec/formats/picture_file.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"
#include "qelpic/json.h"

namespace qel::qelpic {
namespace {

using qelpic::print;

codec::DecodedPicture load(const std::string& path, const Options& options)
{
    auto loaded = about(path, [&] { return codec::loadPicture(codec::readFile(path)); });
    warn(path, loaded.warnings, options.isQuiet);
    return loaded;
}

struct Row {
    const char* channel;
    codec::Difference difference;
    double psnr, similarity;
};

struct Measured {
    std::vector<Row> channels;
    Row whole; // of all samples; the similarity is the mean of the channels'
};

// Deeper pictures are rounded to the other one's precision.
Measured measure(const codec::Picture& a, const codec::Picture& b)
{
    static constexpr const char* kNames[3][4] = {
        {"grey"}, {"red", "green", "blue"}, {"cyan", "magenta", "yellow", "black"}};
    int precision = std::min(a.precision(), b.precision());
    codec::Picture rounded;
    auto fitted = [&](const codec::Picture& picture) -> const codec::Picture& {
        if (picture.precision() == precision) return picture;
        rounded = codec::withPrecision(picture, precision);
        return rounded;
    };
    const codec::Picture &first = fitted(a), &second = fitted(b);
    codec::Comparison comparison = codec::compare(first, second);
    std::vector<double> similarity = codec::structuralSimilarity(first, second);
    Measured measured = {{}, {"all", comparison.whole, comparison.whole.psnr(precision), 0}};
    for (size_t c = 0; c < similarity.size(); ++c) {
        const codec::Difference& difference = comparison.channels[c];
        const char* name = a.hasAlpha() && c + 1 == similarity.size() ? "alpha" : kNames[int(a.space())][c];
        measured.channels.push_back({name, difference, difference.psnr(precision), similarity[c]});
        measured.whole.similarity += similarity[c] / double(similarity.size());
    }
    return measured;
}

void print(const Row& row)
{
    std::printf("%-8s %8.2f %14d %19.4f ", row.channel, row.psnr, row.difference.largestError,
                row.difference.meanSquaredError);
    if (std::isnan(row.similarity))
        std::puts("       -");
    else
        std::printf("%8.5f\n", row.similarity);
}

void print(const Measured& measured)
{
    std::puts("channel  PSNR(dB)  largest error  mean squared error     SSIM");
    for (const Row& row : measured.channels) print(row);
    print(measured.whole);
}

Json jsonOf(const Row& row)
{
    return {{"psnr", row.psnr},
            {"ssim", row.similarity},
            {"largest_error", row.difference.largestError},
            {"mean_squared_error", row.difference.meanSquaredError}};
}

Json jsonOf(const std::string& path, const Measured& measured)
{
    Json json = {{"file", path}};
    json.update(jsonOf(measured.whole));
    for (const Row& row : measured.channels) json["channels"][row.channel] = jsonOf(row);
    return json;
}

}

ExitCode compare(const Options& options)
{
    auto original = load(options.files[0], options);
    bool isDamaged = original.isDamaged, isBelow = false;
    Json all = {{"original", options.files[0]}, {"pictures", Json::array()}};
    for (size_t i = 1; i < options.files.size(); ++i) {
        const std::string& path = options.files[i];
        auto other = load(path, options);
        Measured measured = about(path, [&] { return measure(original.picture, other.picture); });
        isDamaged |= other.isDamaged;
        isBelow |= measured.whole.psnr < options.leastPsnr.value_or(0);
        if (options.isJson) {
            all["pictures"].push_back(jsonOf(path, measured));
            continue;
        }
        if (options.files.size() > 2) std::printf("%s%s:\n", i > 1 ? "\n" : "", path.c_str());
        print(measured);
    }
    if (options.isJson) print(all);
    finishOutput();
    return isBelow ? kFailed : isDamaged ? kDamaged : kDone;
}

}
