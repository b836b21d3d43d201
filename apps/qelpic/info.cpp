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

using qelpic::print;

void print(const codec::jpeg::Info& jpeg)
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

void print(const PlainPicture& plain)
{
    const codec::Picture& picture = plain.picture;
    std::printf("format           %s\n", plain.format);
    std::printf("size             %d x %d\n", picture.width(), picture.height());
    std::printf("colour           %s%s, %d bits%s\n", nameOf(picture.space()), picture.hasAlpha() ? " with alpha" : "",
                picture.precision(), picture.isSigned() ? " signed" : "");
}

double pixels(uint32_t width, uint32_t height) { return double(width) * height; }

void readHeaders(Description& description, const Options& options)
{
    codec::Bytes file = description.file;
    codec::FileKind kind = codec::kindOf(file);
    if (kind == codec::FileKind::jpeg2000) {
        codec::j2k::File j2k = codec::j2k::open(file);
        warn(description.path, j2k.warnings, options.isQuiet);
        description.metadata = codec::j2k::readMetadata(file, j2k.jp2);
        const codec::j2k::Rect& picture = j2k.codestream->size().picture;
        description.pixels = pixels(picture.width(), picture.height());
        description.headers = std::move(j2k);
    } else if (kind == codec::FileKind::jpeg) {
        codec::jpeg::Info jpeg = codec::jpeg::readInfo(file);
        description.metadata = codec::jpeg::readMetadata(file);
        description.pixels = pixels(uint32_t(jpeg.width), uint32_t(jpeg.height));
        description.headers = std::move(jpeg);
    } else {
        auto loaded = codec::loadPicture(file);
        warn(description.path, loaded.warnings, options.isQuiet);
        description.metadata = std::move(loaded.metadata);
        description.pixels = pixels(uint32_t(loaded.picture.width()), uint32_t(loaded.picture.height()));
        const char* format = kind == codec::FileKind::png ? "PNG" : kind == codec::FileKind::pgx ? "PGX" : "PNM";
        description.headers = PlainPicture{format, std::move(loaded.picture)};
    }
}

Description describe(const std::string& path, const Options& options)
{
    Description description = {.path = path, .file = {}, .headers = {}, .metadata = {}};
    about(path, [&] {
        description.file = codec::readFile(path);
        readHeaders(description, options);
    });
    return description;
}

void print(const Description& description)
{
    std::visit([](auto& headers) { print(headers); }, description.headers);
    printMetadata(description.metadata);
    std::printf("file             %zu bytes, %.3f bits per pixel\n", description.file.size(),
                description.bitsPerPixel());
}

}

const char* nameOf(codec::ColourSpace space)
{
    const char* names[] = {"grey", "RGB", "CMYK"};
    return names[int(space)];
}

ExitCode info(const Options& options)
{
    std::vector<std::string> paths = inputsOf(options);
    bool isOne = options.files.size() == 1 && paths.size() == 1;
    size_t failed = 0;
    Json all = Json::array();
    for (const std::string& path : paths) {
        if (!isOne && !options.isJson) std::printf("%s%s:\n", &path == paths.data() ? "" : "\n", path.c_str());
        try {
            Description description = describe(path, options);
            if (options.isJson)
                all.push_back(jsonOf(description));
            else
                print(description);
        } catch (const FileError& error) {
            say(std::string("qelpic: ") + error.what());
            ++failed;
        }
    }
    if (options.isJson) print(all);
    finishOutput();
    return failed == 0 ? kDone : failed == paths.size() ? kFailed : kDamaged;
}

}
