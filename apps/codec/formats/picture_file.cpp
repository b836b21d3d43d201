// SPDX-License-Identifier: Apache-2.0
// Picture files of every kind.
#include "codec/formats/picture_file.h"

#include <algorithm>
#include <iterator>
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

PgxPicture pgxOf(const Picture& picture)
{
    PgxPicture pgx = {picture.width(), picture.height(), picture.precision(), picture.isSigned(), {}};
    size_t samples = picture.sizeInBytes() / size_t(picture.bytesPerSample());
    pgx.samples.resize(samples);
    int32_t offset = picture.isSigned() ? 1 << (picture.precision() - 1) : 0;
    for (size_t i = 0; i < samples; ++i)
        pgx.samples[i] = (picture.bytesPerSample() == 1 ? picture.row(0)[i] : picture.row<uint16_t>(0)[i]) - offset;
    return pgx;
}

void checkColours(ColourSpace space, Format format)
{
    if (space == ColourSpace::cmyk && format != Format::pam && format != Format::pnm)
        throw CodecError("a CMYK picture fits .pam files only");
    if (space != ColourSpace::grey && (format == Format::pgm || format == Format::pgx))
        throw CodecError(std::string("a colour picture does not fit a .") + extensionOf(format) + " file");
}

void writeSamples(const Picture& picture, Format format, const ByteSink& sink)
{
    if (format == Format::pgx)
        writePgx(pgxOf(picture), sink);
    else if (format == Format::pam)
        writePam(picture, sink);
    else if (picture.space() == ColourSpace::grey && format == Format::ppm)
        writePnm(withRgb(picture), sink);
    else
        writePnm(picture, sink);
}

Warnings write(const Picture& picture, Format format, const Metadata& metadata, const ByteSink& sink)
{
    checkColours(picture.space(), format);
    Warnings warnings;
    if (picture.isSigned() && format != Format::pgx) warnings.push_back(noSignIn(format));
    bool losesAlpha = picture.hasAlpha() && (format == Format::pgm || format == Format::ppm || format == Format::pgx);
    if (losesAlpha && !isOpaque(picture)) warnings.push_back(noRoomForAlpha(format));
    if (format == Format::png)
        std::ranges::copy(writePng(picture, sink, metadata), std::back_inserter(warnings));
    else if (losesAlpha)
        writeSamples(withoutAlpha(picture), format, sink);
    else
        writeSamples(picture, format, sink);
    return warnings;
}

[[noreturn]] void refuse(Bytes file)
{
    std::string other = otherKindOf(file);
    throw CodecError(other.empty() ? "not a picture of a known kind" : other + ", which is not supported", 0);
}

Picture pictureOf(const PgxPicture& pgx)
{
    if (pgx.precision > 16) throw CodecError("samples of more than 16 bits are not supported in PGX files");
    Picture picture(pgx.width, pgx.height, ColourSpace::grey, pgx.precision);
    picture.setSigned(pgx.isSigned);
    int32_t offset = pgx.isSigned ? 1 << (pgx.precision - 1) : 0;
    for (size_t i = 0; i < pgx.samples.size(); ++i)
        if (pgx.precision <= 8)
            picture.row(0)[i] = uint8_t(pgx.samples[i] + offset);
        else
            picture.row<uint16_t>(0)[i] = uint16_t(pgx.samples[i] + offset);
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
    if (!format || isCoded(*format)) throw CodecError("the name does not end in .pgm, .ppm, .pnm, .pam, .pgx or .png");
    return storePicture(picture, path, *format);
}

void storePgx(const PgxPicture& picture, const std::string& path)
{
    OutputFile file(path);
    writePgx(picture, [&](Bytes bytes) { file.write(bytes); });
    file.commit();
}

}
