// SPDX-License-Identifier: Apache-2.0
// qelpic info: what a picture file says about itself.
#include <cstdio>

#include "codec/base/file_io.h"
#include "codec/formats/picture_file.h"
#include "codec/j2k/metadata.h"
#include "codec/jpeg/info.h"
#include "codec/jpeg/metadata.h"
#include "qelpic/batch.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"
#include "qelpic/info.h"
#include "qelpic/metadata.h"

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

// Prints what the headers say; returns the number of pixels.
double print(codec::Bytes file, const std::string& path, const Options& options)
{
    codec::FileKind kind = codec::kindOf(file);
    if (kind == codec::FileKind::jpeg2000) {
        codec::j2k::File j2k = codec::j2k::open(file);
        warn(path, j2k.warnings, options.isQuiet);
        double pixels = printJ2k(j2k);
        printMetadata(codec::j2k::readMetadata(file, j2k.jp2));
        return pixels;
    }
    if (kind == codec::FileKind::jpeg) {
        codec::jpeg::Info jpeg = codec::jpeg::readInfo(file);
        printJpeg(jpeg);
        printMetadata(codec::jpeg::readMetadata(file));
        return double(jpeg.width) * jpeg.height;
    }
    auto loaded = codec::loadPicture(file);
    warn(path, loaded.warnings, options.isQuiet);
    printPicture(kind == codec::FileKind::png ? "PNG" : kind == codec::FileKind::pgx ? "PGX" : "PNM", loaded.picture);
    printMetadata(loaded.metadata);
    return double(loaded.picture.width()) * loaded.picture.height();
}

void describe(const std::string& path, const Options& options)
{
    about(path, [&] {
        std::vector<uint8_t> file = codec::readFile(path);
        double pixels = print(file, path, options);
        std::printf("file             %zu bytes, %.3f bits per pixel\n", file.size(), 8 * double(file.size()) / pixels);
    });
}

}

ExitCode info(const Options& options)
{
    std::vector<std::string> paths = inputsOf(options);
    bool isOne = options.files.size() == 1 && paths.size() == 1;
    size_t failed = 0;
    for (const std::string& path : paths) {
        if (!isOne) std::printf("%s%s:\n", &path == paths.data() ? "" : "\n", path.c_str());
        try {
            describe(path, options);
        } catch (const FileError& error) {
            say(std::string("qelpic: ") + error.what());
            ++failed;
        }
    }
    finishOutput();
    return failed == 0 ? kDone : failed == paths.size() ? kFailed : kDamaged;
}

}
