// qelpic encode: any picture to JPEG.
#include "codec/convert.h"
#include "codec/file_io.h"
#include "codec/picture_file.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"

namespace qel::qelpic {
namespace {

constexpr int kPrecision = 8;

// The input in the 8 bits that JPEG's DCT processes have, or as it is for a lossless file.
codec::LoadedPicture load(const Options& options)
{
    auto loaded = codec::loadPicture(codec::readFile(options.input));
    int precision = loaded.picture.precision();
    if (precision == kPrecision || (options.encoding.lossless && precision > 1)) return loaded;
    if (options.encoding.lossless) loaded.warnings.push_back("samples of 1 bit are stored as 8");
    if (precision > kPrecision)
        loaded.warnings.push_back("samples of " + std::to_string(precision) + " bits are rounded to 8");
    loaded.picture = codec::withPrecision(loaded.picture, kPrecision);
    return loaded;
}

codec::JpegScanScript loadScript(const std::string& path)
{
    if (path.empty()) return {};
    return about(path, [&] {
        std::vector<uint8_t> text = codec::readFile(path);
        return codec::parseScanScript({reinterpret_cast<const char*>(text.data()), text.size()});
    });
}

}

ExitCode encode(const Options& options)
{
    about(options.output, [&] {
        if (options.output != "-" && codec::isStorable(options.output))
            throw codec::CodecError("the output is a JPEG file: its name should end in .jpg");
    });
    codec::JpegEncodeOptions encoding = options.encoding;
    encoding.scans = loadScript(options.scanScript);
    auto loaded = about(options.input, [&] { return load(options); });
    warn(options.input, loaded.warnings, options.isQuiet);
    const codec::Picture& picture = loaded.picture;
    std::vector<uint8_t> file = about(options.input, [&] {
        ProgressBar bar("encoding", options.isQuiet);
        encoding.progress = bar.callback();
        return timed(
            options.runs, "encoded", [&] { return codec::encodeJpeg(picture, encoding); },
            [&](auto&) { return double(picture.width()) * picture.height(); });
    });
    about(options.output, [&] {
        codec::OutputFile output(options.output);
        output.write(file);
        output.commit();
    });
    return loaded.isDamaged ? kDamaged : kDone;
}

}
