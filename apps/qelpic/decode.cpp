// qelpic decode: JPEG and JPEG 2000 to any picture file.
#include "codec/base/file_io.h"
#include "codec/formats/picture_file.h"
#include "codec/j2k/decode/reader.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"

namespace qel::qelpic {
namespace {

double pixelsOf(const codec::LoadedPicture& loaded) { return double(loaded.picture.width()) * loaded.picture.height(); }
double pixelsOf(const codec::j2k::DecodedComponent& decoded)
{
    return double(decoded.samples.width) * decoded.samples.height;
}

codec::LoadedPicture decodeJpeg(codec::Bytes file, const Options& all, ProgressBar& bar)
{
    const codec::j2k::DecodeOptions &others = all.j2kDecoding, none;
    if (others.reduce != none.reduce || others.layers != none.layers || !others.transformComponents)
        throw codec::CodecError("--reduce, --layers and --no-component-transform are for JPEG 2000 files");
    codec::jpeg::DecodeOptions options = all.decoding;
    options.progress = bar.callback();
    codec::jpeg::Decoded decoded = codec::jpeg::decode(file, options);
    bool isDamaged = !decoded.warnings.empty();
    return {std::move(decoded.picture), std::move(decoded.warnings), isDamaged};
}

codec::LoadedPicture decodeJ2k(codec::Bytes file, codec::j2k::DecodeOptions options, ProgressBar& bar)
{
    options.progress = bar.callback();
    codec::j2k::Decoded decoded = codec::j2k::decode(file, options);
    return {std::move(decoded.picture), std::move(decoded.warnings), decoded.isDamaged};
}

// decode(file, is JPEG 2000, progress bar) of the input file.
template <class Decode> auto decodeInput(const Options& options, Decode decode)
{
    return about(options.input, [&] {
        std::vector<uint8_t> file = codec::readFile(options.input);
        codec::FileKind kind = codec::kindOf(file);
        bool isJ2k = kind == codec::FileKind::jpeg2000;
        if (kind != codec::FileKind::jpeg && !isJ2k) throw codec::CodecError("not a JPEG or JPEG 2000 file", 0);
        ProgressBar bar("decoding", options.isQuiet);
        return timed(
            options.runs, "decoded", [&] { return decode(file, isJ2k, bar); },
            [](auto& result) { return pixelsOf(result); });
    });
}

ExitCode decodeComponent(const Options& options)
{
    about(options.output, [&] { codec::checkPgxExtension(options.output); });
    auto decoded = decodeInput(options, [&](codec::Bytes file, bool isJ2k, ProgressBar& bar) {
        if (!isJ2k) throw codec::CodecError("--component is for JPEG 2000 files");
        codec::j2k::DecodeOptions decoding = options.j2kDecoding;
        decoding.progress = bar.callback();
        return codec::j2k::decodeComponent(file, size_t(*options.component), decoding);
    });
    warn(options.input, decoded.warnings, options.isQuiet);
    about(options.output, [&] { codec::storePgx(decoded.samples, options.output); });
    return decoded.warnings.empty() ? kDone : kDamaged;
}

}

ExitCode decode(const Options& options)
{
    if (options.component) return decodeComponent(options);
    about(options.output, [&] { codec::checkExtension(options.output); });
    auto decoded = decodeInput(options, [&](codec::Bytes file, bool isJ2k, ProgressBar& bar) {
        return isJ2k ? decodeJ2k(file, options.j2kDecoding, bar) : decodeJpeg(file, options, bar);
    });
    warn(options.input, decoded.warnings, options.isQuiet);
    about(options.output, [&] { codec::storePicture(decoded.picture, options.output); });
    return decoded.isDamaged ? kDamaged : kDone;
}

}
