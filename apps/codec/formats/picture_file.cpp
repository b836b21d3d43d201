// SPDX-License-Identifier: Apache-2.0
// Picture files of every kind.
#include "codec/formats/picture_file.h"

#include <algorithm>
#include <utility>

#include "codec/base/convert.h"
#include "codec/base/error.h"
#include "codec/base/file_io.h"
#include "codec/formats/pgx.h"
#include "codec/formats/png.h"
#include "codec/formats/pnm.h"
#include "codec/j2k/decode/reader.h"
#include "codec/jpeg/decode/reader.h"

namespace qel::codec {
namespace {

Warnings write(const Picture& picture, Format format, const Metadata& metadata, const ByteSink& sink)
{
    bool isGrey = picture.space() == ColourSpace::grey, isCmyk = picture.space() == ColourSpace::cmyk;
    if (isCmyk && format != Format::pam && format != Format::pnm)
        throw CodecError("a CMYK picture fits .pam files only");
    if (!isGrey && format == Format::pgm) throw CodecError("a colour picture does not fit a .pgm file");
    if (format == Format::png) return writePng(picture, sink, metadata);
    if (format == Format::pam)
        writePam(picture, sink);
    else if (isGrey && format == Format::ppm)
        writePnm(withRgb(picture), sink);
    else
        writePnm(picture, sink);
    return {};
}

[[noreturn]] void refuse(Bytes file)
{
    std::string other = otherKindOf(file);
    throw CodecError(other.empty() ? "not a picture of a known kind" : other + ", which is not supported", 0);
}

Picture pictureOf(const PgxPicture& pgx)
{
    if (pgx.isSigned || pgx.precision > 16)
        throw CodecError("only unsigned samples of up to 16 bits are supported in PGX files");
    Picture picture(pgx.width, pgx.height, ColourSpace::grey, pgx.precision);
    if (pgx.precision <= 8)
        std::ranges::copy(pgx.samples, picture.row(0));
    else
        std::ranges::copy(pgx.samples, picture.row<uint16_t>(0));
    return picture;
}

}

FileKind kindOf(Bytes file)
{
    if (isPnm(file)) return FileKind::pnm;
    if (isPgx(file)) return FileKind::pgx;
    if (j2k::isJpeg2000(file)) return FileKind::jpeg2000;
    if (isPng(file)) return FileKind::png;
    if (file.size() >= 2 && file[0] == 0xFF && file[1] == 0xD8) return FileKind::jpeg;
    return FileKind::unknown;
}

DecodedPicture loadPicture(Bytes file)
{
    DecodedPicture loaded;
    switch (kindOf(file)) {
    case FileKind::pnm:
        loaded.picture = readPnm(file);
        break;
    case FileKind::pgx:
        loaded.picture = pictureOf(readPgx(file));
        break;
    case FileKind::png:
        return readPng(file);
    case FileKind::jpeg:
        return jpeg::decode(file);
    case FileKind::jpeg2000:
        return j2k::decode(file);
    default:
        refuse(file);
    }
    return loaded;
}

Warnings storePicture(const Picture& picture, const std::string& path, Format format, const Metadata& metadata)
{
    OutputFile file(path);
    Warnings warnings = write(picture, format, metadata, [&](Bytes bytes) { file.write(bytes); });
    file.commit();
    return warnings;
}

Warnings storePicture(const Picture& picture, const std::string& path)
{
    auto format = path == "-" ? Format::pnm : formatNamed(extensionOf(path));
    if (!format || isCoded(*format) || format == Format::pgx)
        throw CodecError("the name does not end in .pgm, .ppm, .pnm, .pam or .png");
    return storePicture(picture, path, *format);
}

void storePgx(const PgxPicture& picture, const std::string& path)
{
    OutputFile file(path);
    writePgx(picture, [&](Bytes bytes) { file.write(bytes); });
    file.commit();
}

}
