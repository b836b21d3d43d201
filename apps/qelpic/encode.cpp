// SPDX-License-Identifier: Apache-2.0
// qelpic encode: any picture to JPEG or JPEG 2000.
#include <utility>

#include "codec/base/convert.h"
#include "codec/base/file_io.h"
#include "codec/formats/picture_file.h"
#include "codec/j2k/encode/writer.h"
#include "codec/j2k/metadata.h"
#include "codec/jpeg/encode/writer.h"
#include "qelpic/batch.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"
#include "qelpic/metadata.h"

namespace qel::qelpic {
namespace {

using codec::ColourSpace;
using codec::DecodedPicture;
using codec::Format;

constexpr int kPrecision = 8;
constexpr const char* kKnown = ".jpg, .jpeg, .jp2, .j2k, .j2c or .jpc";

// Only JP2 files say which channel is opacity.
void fitAlpha(DecodedPicture& loaded, Format format)
{
    if (!loaded.picture.hasAlpha() || format == Format::jp2) return;
    if (!codec::isOpaque(loaded.picture)) loaded.warnings.push_back(codec::noRoomForAlpha(format));
    loaded.picture = codec::withoutAlpha(loaded.picture);
}

void fitSign(DecodedPicture& loaded, Format format)
{
    if (!loaded.picture.isSigned() || codec::isJpeg2000(format)) return;
    loaded.warnings.push_back(codec::noSignIn(format));
    loaded.picture.setSigned(false);
}

// The picture in the 8 bits that JPEG's DCT processes have, or as it is for a lossless file.
void fitToJpeg(DecodedPicture& loaded, bool isLossless)
{
    int precision = loaded.picture.precision();
    if (precision == kPrecision || (isLossless && precision > 1)) return;
    if (isLossless) loaded.warnings.push_back("samples of 1 bit are stored as 8");
    if (precision > kPrecision)
        loaded.warnings.push_back("samples of " + std::to_string(precision) + " bits are rounded to 8");
    loaded.picture = codec::withPrecision(loaded.picture, kPrecision);
}

codec::jpeg::ScanScript loadScript(const std::string& path)
{
    if (path.empty()) return {};
    return about(path, [&] {
        std::vector<uint8_t> text = codec::readFile(path);
        return codec::jpeg::parseScanScript({reinterpret_cast<const char*>(text.data()), text.size()});
    });
}

// The colour space of the picture in the file.
ColourSpace spaceIn(Format format, ColourSpace space, const Options& options)
{
    return format == Format::jpeg && options.encoding.target == codec::jpeg::Target::grey ? ColourSpace::grey : space;
}

codec::MetadataRoom roomIn(Format format, ColourSpace space, const Options& options)
{
    if (format == Format::jp2) return codec::j2k::kMetadataRoom;
    if (format == Format::codestream) return codec::j2k::kCodestreamRoom;
    return codec::jpeg::roomFor(options.encoding, space);
}

std::vector<uint8_t> encodeAs(Format format, const DecodedPicture& loaded, const Options& options,
                              const codec::jpeg::ScanScript& scans, const std::function<void(double)>& progress)
{
    if (format == Format::jpeg) {
        codec::jpeg::EncodeOptions encoding = options.encoding;
        encoding.scans = scans;
        encoding.metadata = loaded.metadata;
        encoding.progress = progress;
        return codec::jpeg::encode(loaded.picture, encoding);
    }
    codec::j2k::EncodeOptions encoding = options.j2k;
    encoding.isJp2 = format == Format::jp2;
    encoding.metadata = loaded.metadata;
    encoding.progress = progress;
    return codec::j2k::encode(loaded.picture, encoding);
}

Outcome encodeOne(const Job& job, const Options& options, const codec::jpeg::ScanScript& scans)
{
    std::vector<uint8_t> input = about(job.input, [&] { return codec::readFile(job.input); });
    DecodedPicture loaded = about(job.input, [&] {
        DecodedPicture decoded = codec::loadPicture(input);
        fitAlpha(decoded, job.format);
        fitSign(decoded, job.format);
        if (job.format == Format::jpeg) fitToJpeg(decoded, options.encoding.lossless);
        return decoded;
    });
    ColourSpace space = spaceIn(job.format, loaded.picture.space(), options);
    settleMetadata(loaded, roomIn(job.format, space, options), space, options);
    warn(job.input, loaded.warnings, options.isQuiet);
    double pixels = double(loaded.picture.width()) * loaded.picture.height();
    std::vector<uint8_t> file = about(job.input, [&] {
        ProgressBar bar("encoding", options.isQuiet || !options.outputFolder.empty());
        return timed(
            options.runs, "encoded", [&] { return encodeAs(job.format, loaded, options, scans, bar.callback()); },
            [&](auto&) { return pixels; });
    });
    about(job.output, [&] {
        codec::OutputFile output(job.output);
        output.write(file);
        output.commit();
    });
    return {pixels, input.size(), file.size(), loaded.isDamaged};
}

}

ExitCode encode(const Options& options)
{
    auto jobs = jobsOf(options, Format::jpeg, codec::isCoded, kKnown);
    codec::jpeg::ScanScript scans = loadScript(options.scanScript);
    return runAll(options, "encoding", jobs, [&](const Job& job) { return encodeOne(job, options, scans); });
}

}
