// SPDX-License-Identifier: Apache-2.0
// Names and first bytes of formats.
#include "codec/formats/formats.h"

#include <algorithm>
#include <string_view>

namespace qel::codec {

namespace {

using namespace std::string_view_literals;

constexpr struct {
    const char* name;
    Format format;
} kNames[] = {{"pgm", Format::pgm},        {"ppm", Format::ppm},       {"pnm", Format::pnm},
              {"pam", Format::pam},        {"png", Format::png},       {"pgx", Format::pgx},
              {"jpg", Format::jpeg},       {"jpeg", Format::jpeg},     {"jpe", Format::jpeg},
              {"jfif", Format::jpeg},      {"jp2", Format::jp2},       {"j2k", Format::codestream},
              {"j2c", Format::codestream}, {"jpc", Format::codestream}};

constexpr struct {
    size_t at;
    std::string_view text;
    const char* name;
} kOthers[] = {{0, "II*\0"sv, "a TIFF file"},     {0, "MM\0*"sv, "a TIFF file"},       {0, "II+\0"sv, "a BigTIFF file"},
               {8, "WEBP"sv, "a WebP file"},      {0, "GIF8"sv, "a GIF file"},         {0, "BM"sv, "a BMP file"},
               {4, "ftypheic"sv, "a HEIF file"},  {4, "ftypheix"sv, "a HEIF file"},    {4, "ftypmif1"sv, "a HEIF file"},
               {4, "ftypavif"sv, "an AVIF file"}, {0, "\xFF\x0A"sv, "a JPEG XL file"}, {4, "JXL "sv, "a JPEG XL file"},
               {0, "%PDF"sv, "a PDF file"},       {0, "8BPS"sv, "a PSD file"}};

}

std::optional<Format> formatNamed(const std::string& name)
{
    auto found = std::ranges::find_if(kNames, [&](auto& known) { return name == known.name; });
    if (found == std::end(kNames)) return std::nullopt;
    return found->format;
}

const char* extensionOf(Format format)
{
    return std::ranges::find_if(kNames, [&](auto& known) { return known.format == format; })->name;
}

std::string noRoomForAlpha(Format format)
{
    return std::string("the alpha channel is left out: .") + extensionOf(format) + " files have none";
}

std::string noSignIn(Format format)
{
    return std::string("signed samples are shifted up to begin at 0: .") + extensionOf(format) + " files have no sign";
}

std::string otherKindOf(Bytes file)
{
    std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    for (auto& other : kOthers)
        if (text.size() > other.at && text.substr(other.at).starts_with(other.text)) return other.name;
    return "";
}

}
