// SPDX-License-Identifier: Apache-2.0
// qelpic compare: PSNR and largest error of two pictures.
#include "codec/base/compare.h"

#include <algorithm>
#include <cstdio>

#include "codec/base/convert.h"
#include "codec/base/file_io.h"
#include "codec/formats/picture_file.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"

namespace qel::qelpic {
namespace {

codec::DecodedPicture load(const std::string& path, const Options& options)
{
    auto loaded = about(path, [&] { return codec::loadPicture(codec::readFile(path)); });
    warn(path, loaded.warnings, options.isQuiet);
    return loaded;
}

void print(const char* channel, const codec::Difference& difference, int precision)
{
    std::printf("%-8s %8.2f %14d %19.4f\n", channel, difference.psnr(precision), difference.largestError,
                difference.meanSquaredError);
}

// Prints the differences; returns the PSNR of all samples. Deeper ones are rounded to the other picture's precision.
double psnrOf(const codec::Picture& a, const codec::Picture& b, const std::string& path)
{
    int precision = std::min(a.precision(), b.precision());
    codec::Picture rounded;
    auto fitted = [&](const codec::Picture& picture) -> const codec::Picture& {
        if (picture.precision() == precision) return picture;
        rounded = codec::withPrecision(picture, precision);
        return rounded;
    };
    auto result = about(path, [&] { return codec::compare(fitted(a), fitted(b)); });
    static constexpr const char* kNames[3][4] = {
        {"grey"}, {"red", "green", "blue"}, {"cyan", "magenta", "yellow", "black"}};
    std::puts("channel  PSNR(dB)  largest error  mean squared error");
    for (size_t c = 0; c < result.channels.size(); ++c) print(kNames[int(a.space())][c], result.channels[c], precision);
    print("all", result.whole, precision);
    return result.whole.psnr(precision);
}

}

ExitCode compare(const Options& options)
{
    auto original = load(options.files[0], options);
    bool isDamaged = original.isDamaged, isBelow = false;
    for (size_t i = 1; i < options.files.size(); ++i) {
        if (options.files.size() > 2) std::printf("%s%s:\n", i > 1 ? "\n" : "", options.files[i].c_str());
        auto other = load(options.files[i], options);
        isDamaged |= other.isDamaged;
        isBelow |= psnrOf(original.picture, other.picture, options.files[i]) < options.leastPsnr.value_or(0);
    }
    finishOutput();
    return isBelow ? kFailed : isDamaged ? kDamaged : kDone;
}

}
