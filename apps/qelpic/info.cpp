// qelpic info: what a picture file says about itself.
#include <cstdio>

#include "codec/base/file_io.h"
#include "codec/formats/picture_file.h"
#include "codec/jpeg/info.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"
#include "qelpic/info.h"

namespace qel::qelpic {
namespace {

void printJpeg(const codec::jpeg::Info& jpeg)
{
    std::printf("format           JPEG, %s\n", nameOf(jpeg.process));
    std::printf("size             %d x %d\n", jpeg.width, jpeg.height);
    std::printf("colour           %s, %d bits\n", nameOf(jpeg.colour), jpeg.precision);
    bool isLossless = jpeg.process == codec::jpeg::Process::lossless;
    for (auto& component : jpeg.components) {
        std::printf("component %-6d %d x %d, sampling %dx%d", component.id, component.width, component.height,
                    component.h, component.v);
        if (!isLossless) std::printf(", quantization table %d", component.quantizer);
        std::puts("");
    }
    if (isLossless) std::printf("predictor        %d\npoint transform  %d\n", jpeg.predictor, jpeg.pointTransform);
    std::printf("scans            %d\n", jpeg.scans);
    if (jpeg.restartInterval) std::printf("restart interval %d MCUs\n", jpeg.restartInterval);
    if (jpeg.hasJfif) std::puts("JFIF             yes");
    if (jpeg.adobeTransform >= 0) std::printf("Adobe transform  %d\n", jpeg.adobeTransform);
}

void printPicture(const char* format, const codec::Picture& picture)
{
    const char* spaces[] = {"grey", "RGB", "CMYK"};
    std::printf("format           %s\n", format);
    std::printf("size             %d x %d\n", picture.width(), picture.height());
    std::printf("colour           %s, %d bits\n", spaces[int(picture.space())], picture.precision());
}

}

ExitCode info(const Options& options)
{
    return about(options.input, [&] {
        std::vector<uint8_t> file = codec::readFile(options.input);
        double pixels;
        codec::FileKind kind = codec::kindOf(file);
        if (kind == codec::FileKind::jpeg2000) {
            codec::j2k::File j2k = codec::j2k::open(file);
            warn(options.input, j2k.warnings, options.isQuiet);
            pixels = printJ2k(j2k);
        } else if (kind == codec::FileKind::jpeg) {
            codec::jpeg::Info jpeg = codec::jpeg::readInfo(file);
            printJpeg(jpeg);
            pixels = double(jpeg.width) * jpeg.height;
        } else {
            auto loaded = codec::loadPicture(file);
            warn(options.input, loaded.warnings, options.isQuiet);
            printPicture(kind == codec::FileKind::png   ? "PNG"
                         : kind == codec::FileKind::pgx ? "PGX"
                                                        : "PNM",
                         loaded.picture);
            pixels = double(loaded.picture.width()) * loaded.picture.height();
        }
        std::printf("file             %zu bytes, %.3f bits per pixel\n", file.size(), 8 * file.size() / pixels);
        return kDone;
    });
}

}
