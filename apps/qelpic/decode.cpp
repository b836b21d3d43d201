// SPDX-License-Identifier: Apache-2.0
// qelpic decode: JPEG and JPEG 2000 to any picture file.
#include <functional>

#include "codec/base/file_io.h"
#include "codec/formats/colour_management.h"
#include "codec/formats/picture_file.h"
#include "codec/j2k/decode/reader.h"
#include "codec/jpeg/decode/reader.h"
#include "qelpic/batch.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"
#include "qelpic/metadata.h"

namespace qel::qelpic {
namespace {

using codec::ColourSpace;
using codec::DecodedPicture;
using codec::Format;

constexpr const char* kKnown = ".png, .pgm, .ppm, .pnm, .pam or .pgx";

bool isPicture(Format format) { return !codec::isCoded(format); }
bool isPgx(Format format) { return format == Format::pgx; }

double pixelsOf(const DecodedPicture& loaded) { return double(loaded.picture.width()) * loaded.picture.height(); }
double pixelsOf(const codec::j2k::DecodedComponent& decoded)
{
    return double(decoded.samples.width) * decoded.samples.height;
}

DecodedPicture decodeJpeg(codec::Bytes file, const Options& all, const std::function<void(double)>& progress)
{
    const codec::j2k::DecodeOptions &others = all.j2kDecoding, none;
    if (others.reduce != none.reduce || others.layers != none.layers || !others.transformComponents)
        throw codec::CodecError("--reduce, --layers and --no-component-transform are for JPEG 2000 files");
    codec::jpeg::DecodeOptions options = all.decoding;
    options.progress = progress;
    return codec::jpeg::decode(file, options);
}

// decode(file, is JPEG 2000, progress) of the input file.
template <class Decode> auto decodeInput(const Job& job, const Options& options, size_t& bytes, Decode decode)
{
    return about(job.input, [&] {
        std::vector<uint8_t> file = codec::readFile(job.input);
        bytes = file.size();
        codec::FileKind kind = codec::kindOf(file);
        bool isJ2k = kind == codec::FileKind::jpeg2000;
        if (kind != codec::FileKind::jpeg && !isJ2k) {
            std::string other = codec::otherKindOf(file);
            throw codec::CodecError("not a JPEG or JPEG 2000 file" + (other.empty() ? "" : ", but " + other), 0);
        }
        ProgressBar bar("decoding", options.isQuiet || !options.outputFolder.empty());
        return timed(
            options.runs, "decoded", [&] { return decode(file, isJ2k, bar.callback()); },
            [](auto& result) { return pixelsOf(result); });
    });
}

Outcome decodeComponent(const Job& job, const Options& options)
{
    Outcome outcome;
    auto decoded = decodeInput(job, options, outcome.bytesIn, [&](codec::Bytes file, bool isJ2k, auto progress) {
        if (!isJ2k) throw codec::CodecError("--component is for JPEG 2000 files");
        codec::j2k::DecodeOptions decoding = options.j2kDecoding;
        decoding.progress = progress;
        return codec::j2k::decodeComponent(file, size_t(*options.component), decoding);
    });
    warn(job.input, decoded.warnings, options.isQuiet);
    about(job.output, [&] { codec::storePgx(decoded.samples, job.output); });
    outcome.pixels = pixelsOf(decoded);
    outcome.isDamaged = !decoded.warnings.empty();
    return outcome;
}

// Formats without CMYK get sRGB.
void convertInks(DecodedPicture& decoded, Format format)
{
    if (decoded.picture.space() != ColourSpace::cmyk || (format != Format::png && format != Format::ppm)) return;
    codec::Metadata& metadata = decoded.metadata;
    bool hasProfile = codec::suits(metadata.icc, ColourSpace::cmyk);
    if (!hasProfile) decoded.warnings.push_back("CMYK without a colour profile: converted to RGB plainly");
    decoded.picture = codec::rgbOfCmyk(decoded.picture, hasProfile ? codec::Bytes(metadata.icc) : codec::Bytes(),
                                       decoded.isInkInverted);
    metadata.icc.clear();
}

Outcome decodeOne(const Job& job, const Options& options)
{
    Outcome outcome;
    DecodedPicture decoded =
        decodeInput(job, options, outcome.bytesIn, [&](codec::Bytes file, bool isJ2k, auto progress) -> DecodedPicture {
            if (!isJ2k) return decodeJpeg(file, options, progress);
            codec::j2k::DecodeOptions decoding = options.j2kDecoding;
            decoding.progress = progress;
            return codec::j2k::decode(file, decoding);
        });
    about(job.input, [&] { convertInks(decoded, job.format); });
    settleMetadata(decoded, codec::roomIn(job.format), decoded.picture.space(), options);
    warn(job.input, decoded.warnings, options.isQuiet);
    auto left = about(job.output,
                      [&] { return codec::storePicture(decoded.picture, job.output, job.format, decoded.metadata); });
    warn(job.output, left, options.isQuiet);
    outcome.pixels = pixelsOf(decoded);
    outcome.isDamaged = decoded.isDamaged;
    if (job.output != "-") outcome.bytesOut = codec::fileSize(job.output);
    return outcome;
}

}

ExitCode decode(const Options& options)
{
    bool isComponent = options.component.has_value();
    auto jobs = isComponent
                    ? jobsOf(options, Format::pgx, isPgx, ".pgx")
                    : jobsOf(options, options.outputFolder.empty() ? Format::pnm : Format::png, isPicture, kKnown);
    return runAll(options, "decoding", jobs, [&](const Job& job) {
        return isComponent ? decodeComponent(job, options) : decodeOne(job, options);
    });
}

}
