// qelpic decode: JPEG to any picture file.
#include "codec/file_io.h"
#include "codec/picture_file.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"

namespace qel::qelpic {

ExitCode decode(const Options& options)
{
    about(options.output, [&] { codec::checkExtension(options.output); });
    auto decoded = about(options.input, [&] {
        std::vector<uint8_t> file = codec::readFile(options.input);
        if (codec::kindOf(file) == codec::FileKind::jpeg2000)
            throw codec::CodecError("decoding of JPEG 2000 files is not supported yet");
        if (codec::kindOf(file) != codec::FileKind::jpeg) throw codec::CodecError("not a JPEG file", 0);
        ProgressBar bar("decoding", options.isQuiet);
        codec::JpegDecodeOptions decoding = options.decoding;
        decoding.progress = bar.callback();
        return timed(
            options.runs, "decoded", [&] { return codec::decodeJpeg(file, decoding); },
            [](auto& result) { return double(result.picture.width()) * result.picture.height(); });
    });
    warn(options.input, decoded.warnings, options.isQuiet);
    about(options.output, [&] { codec::storePicture(decoded.picture, options.output); });
    return decoded.warnings.empty() ? kDone : kDamaged;
}

}
