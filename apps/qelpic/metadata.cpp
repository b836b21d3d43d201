// SPDX-License-Identifier: Apache-2.0
// Metadata: passed on, left out, shown.
#include "qelpic/metadata.h"

#include <cctype>
#include <cstdio>

#include "codec/formats/colour_management.h"

namespace qel::qelpic {
namespace {

// Other characters than printed ones, which could do things to a terminal, as dots.
std::string printable(std::string text)
{
    for (char& c : text)
        if (std::iscntrl(static_cast<unsigned char>(c))) c = '.';
    return text;
}

}

void settleMetadata(codec::DecodedPicture& loaded, const codec::MetadataRoom& room, codec::ColourSpace space,
                    const Options& options)
{
    codec::Metadata& metadata = loaded.metadata;
    int orientation = codec::orientationOf(metadata.exif);
    if (options.turnsUpright && orientation != 1) {
        loaded.picture = codec::turned(loaded.picture, orientation);
        if (metadata.density && orientation > 4) std::swap(metadata.density->x, metadata.density->y);
        codec::setUpright(metadata.exif);
        orientation = 1;
    }
    if (options.strips) {
        metadata = {};
        return;
    }
    bool hadExif = !metadata.exif.empty();
    std::string names;
    for (const std::string& name : codec::limit(metadata, room, space)) names += (names.empty() ? "" : ", ") + name;
    if (!names.empty()) loaded.warnings.push_back("not in the output: " + names);
    if (hadExif && metadata.exif.empty() && orientation != 1)
        loaded.warnings.push_back("the picture is not upright, and the output cannot say so: see --auto-orient");
}

void printMetadata(const codec::Metadata& metadata)
{
    if (!metadata.icc.empty())
        std::printf("ICC profile      %zu bytes, %s\n", metadata.icc.size(),
                    printable(codec::nameOfProfile(metadata.icc)).c_str());
    if (!metadata.exif.empty())
        std::printf("EXIF             %zu bytes, orientation %d\n", metadata.exif.size(),
                    codec::orientationOf(metadata.exif));
    if (!metadata.xmp.empty()) std::printf("XMP              %zu bytes\n", metadata.xmp.size());
    if (auto& density = metadata.density) {
        double perInch = density->isPerMetre ? codec::kMetresPerInch : 1;
        std::printf("density          %.4g x %.4g%s\n", density->x * perInch, density->y * perInch,
                    density->isPerMetre ? " dots per inch" : ", an aspect ratio");
    }
    for (const std::string& comment : metadata.comments)
        std::printf("comment          %s\n", printable(comment).c_str());
    for (const std::string& other : metadata.others) std::printf("also             %s\n", printable(other).c_str());
}

}
