// Picture files of every kind: known by their content when read, by the extension of their name when written.
#pragma once

#include <string>

#include "codec/base/bytes.h"
#include "codec/base/picture.h"
#include "codec/formats/pgx.h"

namespace qel::codec {

enum class FileKind { unknown, pnm, pgx, png, jpeg, jpeg2000 };

FileKind kindOf(Bytes file);

struct LoadedPicture {
    Picture picture;
    Warnings warnings;
    bool isDamaged = false; // some of the picture is missing
};

// The picture in a PGM, PPM, PAM, PGX, PNG, JPEG or JPEG 2000 file. Throws CodecError.
LoadedPicture loadPicture(Bytes file);

// True if `path` is "-" or has an extension that storePicture knows.
bool isStorable(const std::string& path);

// Throws CodecError unless isStorable(path), so that this shows before the work is done.
void checkExtension(const std::string& path);

// Writes .pgm, .ppm, .pnm, .pam or .png; "-" is standard output and gets PNM. A grey picture becomes RGB for .ppm.
// Nothing stands under the name until the file is whole. Throws CodecError.
void storePicture(const Picture& picture, const std::string& path);

// The same for single components, which go into .pgx files.
void checkPgxExtension(const std::string& path);
void storePgx(const PgxPicture& picture, const std::string& path);

}
