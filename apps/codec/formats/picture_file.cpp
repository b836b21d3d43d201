// Picture files of every kind.
#include "codec/formats/picture_file.h"

#include <algorithm>
#include <array>
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

enum class Extension { none, pgm, ppm, pnm, pam, png, pgx };

Extension kindOfName(const std::string& path)
{
    if (path == "-") return Extension::pnm;
    const std::array<const char*, 7> names = {"", "pgm", "ppm", "pnm", "pam", "png", "pgx"};
    auto found = std::ranges::find(names, extensionOf(path));
    return found == names.end() ? Extension::none : Extension(found - names.begin());
}

void write(const Picture& picture, Extension extension, const ByteSink& sink)
{
    bool isGrey = picture.space() == ColourSpace::grey, isCmyk = picture.space() == ColourSpace::cmyk;
    if (isCmyk && extension != Extension::pam && extension != Extension::pnm)
        throw CodecError("a CMYK picture fits .pam files only");
    if (!isGrey && extension == Extension::pgm) throw CodecError("a colour picture does not fit a .pgm file");
    if (extension == Extension::png) return writePng(picture, sink);
    if (extension == Extension::pam) return writePam(picture, sink);
    if (isGrey && extension == Extension::ppm) return writePnm(withRgb(picture), sink);
    writePnm(picture, sink);
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

LoadedPicture loadJ2k(Bytes file)
{
    j2k::Decoded decoded = j2k::decode(file);
    return {std::move(decoded.picture), std::move(decoded.warnings), decoded.isDamaged};
}

LoadedPicture loadJpeg(Bytes file)
{
    jpeg::Decoded decoded = jpeg::decode(file);
    bool isDamaged = !decoded.warnings.empty();
    return {std::move(decoded.picture), std::move(decoded.warnings), isDamaged};
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

LoadedPicture loadPicture(Bytes file)
{
    LoadedPicture loaded;
    switch (kindOf(file)) {
    case FileKind::pnm:
        loaded.picture = readPnm(file);
        break;
    case FileKind::pgx:
        loaded.picture = pictureOf(readPgx(file));
        break;
    case FileKind::png:
        loaded.picture = readPng(file, loaded.warnings);
        break;
    case FileKind::jpeg:
        return loadJpeg(file);
    case FileKind::jpeg2000:
        return loadJ2k(file);
    default:
        throw CodecError("not a picture of a known kind", 0);
    }
    return loaded;
}

bool isStorable(const std::string& path)
{
    Extension extension = kindOfName(path);
    return extension != Extension::none && extension != Extension::pgx;
}

void checkExtension(const std::string& path)
{
    if (!isStorable(path)) throw CodecError("the name does not end in .pgm, .ppm, .pnm, .pam or .png");
}

void storePicture(const Picture& picture, const std::string& path)
{
    checkExtension(path);
    OutputFile file(path);
    write(picture, kindOfName(path), [&](Bytes bytes) { file.write(bytes); });
    file.commit();
}

void checkPgxExtension(const std::string& path)
{
    if (extensionOf(path) != "pgx") throw CodecError("the name of a component does not end in .pgx");
}

void storePgx(const PgxPicture& picture, const std::string& path)
{
    checkPgxExtension(path);
    OutputFile file(path);
    writePgx(picture, [&](Bytes bytes) { file.write(bytes); });
    file.commit();
}

}
