// SPDX-License-Identifier: Apache-2.0
// Boxes.
#include "codec/j2k/encode/box_writer.h"

#include "codec/j2k/box_types.h"
#include "codec/j2k/boxes.h"
#include "codec/j2k/metadata.h"

namespace qel::codec::j2k {

namespace {

constexpr int kWavelets = 7; // the only kind of compression

uint32_t colourOf(ColourSpace space)
{
    if (space == ColourSpace::grey) return Jp2Colour::kGrey;
    return space == ColourSpace::rgb ? Jp2Colour::kSrgb : Jp2Colour::kCmyk;
}

void writeImageHeader(ByteWriter& out, const PictureForm& picture)
{
    out.u32(uint32_t(picture.height()));
    out.u32(uint32_t(picture.width()));
    out.u16(picture.channels());
    out.u8((picture.isSigned() ? 128 : 0) | (picture.precision() - 1));
    out.u8(kWavelets);
    out.u8(0); // the colour space is known
    out.u8(0); // no intellectual property
}

void writeEnumeratedColour(ByteWriter& out, ColourSpace space)
{
    box(out, box_type::kColour, [&] {
        out.u8(Jp2Colour::kEnumerated);
        out.u8(0); // precedence
        out.u8(0); // approximation
        out.u32(colourOf(space));
    });
}

// The colours in their order, then alpha of all of them.
void writeDefinitions(ByteWriter& out, const PictureForm& picture)
{
    int colours = channelsOf(picture.space());
    box(out, box_type::kDefinitions, [&] {
        out.u16(picture.channels());
        for (int channel = 0; channel < picture.channels(); ++channel) {
            bool isColour = channel < colours;
            out.u16(channel);
            out.u16(isColour ? Jp2Definition::kColour : Jp2Definition::kOpacity);
            out.u16(isColour ? channel + 1 : Jp2Definition::kWholePicture);
        }
    });
}

// A profile that not all readers know stands behind the colour space that it is for.
void writeColour(ByteWriter& out, ColourSpace space, Bytes profile)
{
    bool isRead = isRestricted(profile);
    if (!isRead) writeEnumeratedColour(out, space);
    if (!profile.empty())
        box(out, box_type::kColour, [&] {
            out.u8(isRead ? Jp2Colour::kRestrictedProfile : Jp2Colour::kAnyProfile);
            out.u8(0); // precedence
            out.u8(0); // approximation
            out.append(profile);
        });
}

}

size_t writeJp2Header(ByteWriter& out, const PictureForm& picture, const Metadata& metadata)
{
    using namespace box_type;
    bool isExtended = !metadata.icc.empty() && !isRestricted(metadata.icc);
    box(out, kSignature, [&] { out.u32(kSignatureContents); });
    box(out, kFileType, [&] {
        out.u32(kBrand);
        out.u32(0); // version
        out.u32(kBrand);
        if (isExtended) out.u32(kExtendedBrand);
    });
    box(out, kHeader, [&] {
        box(out, kImageHeader, [&] { writeImageHeader(out, picture); });
        writeColour(out, picture.space(), metadata.icc);
        if (picture.hasAlpha()) writeDefinitions(out, picture);
        if (metadata.density) writeResolution(out, *metadata.density);
    });
    writeUuids(out, metadata);
    size_t length = out.position();
    out.u32(0);
    out.u32(kCodestream);
    return length;
}

}
