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

codec::LoadedPicture load(const std::string& path, const Options& options)
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

}

ExitCode compare(const Options& options)
{
    auto a = load(options.input, options), b = load(options.output, options);
    // Deeper samples are rounded to the other picture's precision.
    int precision = std::min(a.picture.precision(), b.picture.precision());
    for (codec::Picture* picture : {&a.picture, &b.picture})
        if (picture->precision() > precision) *picture = codec::withPrecision(*picture, precision);
    auto result = about(options.output, [&] { return codec::compare(a.picture, b.picture); });
    static constexpr const char* kNames[3][4] = {
        {"grey"}, {"red", "green", "blue"}, {"cyan", "magenta", "yellow", "black"}};
    std::puts("channel  PSNR(dB)  largest error  mean squared error");
    for (size_t c = 0; c < result.channels.size(); ++c)
        print(kNames[int(a.picture.space())][c], result.channels[c], precision);
    print("all", result.whole, precision);
    return a.isDamaged || b.isDamaged ? kDamaged : kDone;
}

}
