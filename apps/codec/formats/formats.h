// SPDX-License-Identifier: Apache-2.0
// Formats of files: which there are, by their names and by how files begin.
#pragma once

#include <optional>
#include <string>

#include "codec/base/bytes.h"

namespace qel::codec {

enum class Format { pgm, ppm, pnm, pam, png, pgx, jpeg, jp2, codestream };

// By its name or an extension, in small letters and without a dot: "jpg", "jpeg", "j2k"...
std::optional<Format> formatNamed(const std::string& name);
// The usual extension.
const char* extensionOf(Format format);

constexpr bool isJpeg2000(Format format) { return format == Format::jp2 || format == Format::codestream; }
constexpr bool isCoded(Format format) { return format == Format::jpeg || isJpeg2000(format); }

// What to say where alpha is left out of a file that has no room for it, and where signed samples lose their sign.
std::string noRoomForAlpha(Format format);
std::string noSignIn(Format format);

// What a file of a kind that is not read seems to be, such as "a TIFF file"; empty for what is not known either.
std::string otherKindOf(Bytes file);

}
