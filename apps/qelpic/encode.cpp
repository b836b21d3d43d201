// qelpic encode: any picture to JPEG or JPEG 2000.
#include "codec/base/convert.h"
#include "codec/base/file_io.h"
#include "codec/formats/picture_file.h"
#include "codec/j2k/encode/writer.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"

namespace qel::qelpic {
namespace {

constexpr int kPrecision = 8;

// The input in the 8 bits that JPEG's DCT processes have, or as it is for a lossless file.
codec::LoadedPicture loadForJpeg(const Options& options)
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

codec::jpeg::ScanScript loadScript(const std::string& path)
{
    if (path.empty()) return {};
    return about(path, [&] {
        std::vector<uint8_t> text = codec::readFile(path);
        return codec::jpeg::parseScanScript({reinterpret_cast<const char*>(text.data()), text.size()});
    });
}

std::vector<uint8_t> encodeAsJpeg(const codec::Picture& picture, const Options& options,
                                  const codec::jpeg::ScanScript& scans, ProgressBar& bar)
{
    codec::jpeg::EncodeOptions encoding = options.encoding;
    encoding.scans = scans;
    encoding.progress = bar.callback();
    return codec::jpeg::encode(picture, encoding);
}

std::vector<uint8_t> encodeAsJ2k(const codec::Picture& picture, const Options& options, ProgressBar& bar)
{
    codec::j2k::EncodeOptions encoding = options.j2k;
    encoding.isJp2 = codec::extensionOf(options.output) == "jp2";
    encoding.progress = bar.callback();
    return codec::j2k::encode(picture, encoding);
}

}

bool isJpeg2000Name(const std::string& path)
{
    std::string extension = codec::extensionOf(path);
    return extension == "jp2" || extension == "j2k" || extension == "j2c" || extension == "jpc";
}

ExitCode encode(const Options& options)
{
    about(options.output, [&] {
        if (options.output != "-" && codec::isStorable(options.output))
            throw codec::CodecError("what is encoded is JPEG or JPEG 2000: the name should end in .jpg, .jp2 or .j2k");
    });
    bool isJ2k = isJpeg2000Name(options.output);
    codec::jpeg::ScanScript scans = loadScript(options.scanScript);
    auto loaded = about(options.input, [&] {
        return isJ2k ? codec::loadPicture(codec::readFile(options.input)) : loadForJpeg(options);
    });
    warn(options.input, loaded.warnings, options.isQuiet);
    const codec::Picture& picture = loaded.picture;
    std::vector<uint8_t> file = about(options.input, [&] {
        ProgressBar bar("encoding", options.isQuiet);
        return timed(
            options.runs, "encoded",
            [&] { return isJ2k ? encodeAsJ2k(picture, options, bar) : encodeAsJpeg(picture, options, scans, bar); },
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
