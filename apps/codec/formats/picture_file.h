// SPDX-License-Identifier: Apache-2.0
// Picture files of every kind: known by their content when read, by the extension of their name when written.
#pragma once

#include <string>

#include "codec/base/bytes.h"
#include "codec/base/decoded_picture.h"
#include "codec/formats/formats.h"
#include "codec/formats/pgx.h"

namespace qel::codec {

enum class FileKind { unknown, pnm, pgx, png, jpeg, jpeg2000 };

FileKind kindOf(Bytes file);

// The picture in a PGM, PPM, PAM, PGX, PNG, JPEG or JPEG 2000 file. Throws CodecError.
DecodedPicture loadPicture(Bytes file);

// Writes a picture as PGM, PPM, PNM, PAM, PGX or PNG; "-" is standard output. A grey picture becomes RGB for PPM,
// and one with alpha PAM for PNM; PGM, PPM and PGX leave alpha out.
// Signed samples are for PGX; others begin at 0. Nothing
// stands under the name until the file is whole. Returns what could not be written, and throws
// CodecError where the picture does not fit the format.
Warnings storePicture(const Picture& picture, const std::string& path, Format format, const Metadata& metadata = {});
// The same, where the name says the format.
Warnings storePicture(const Picture& picture, const std::string& path);

// What these formats have room for.
constexpr MetadataRoom roomIn(Format format) { return format == Format::png ? MetadataRoom{} : kNoMetadata; }

// The same for single components, which go into PGX files.
void storePgx(const PgxPicture& picture, const std::string& path);

}
