// Boxes.
#include "codec/j2k/encode/box_writer.h"

#include "codec/j2k/box_types.h"
#include "codec/j2k/boxes.h"

namespace qel::codec::j2k {

namespace {

constexpr int kWavelets = 7; // the only kind of compression

// A box with what `contents()` writes.
template <class Contents> void box(ByteWriter& out, uint32_t type, Contents contents)
{
    size_t begin = out.position();
    out.u32(0);
    out.u32(type);
    contents();
    out.setLength(begin, begin);
}

uint32_t colourOf(ColourSpace space)
{
    if (space == ColourSpace::grey) return Jp2Colour::kGrey;
    return space == ColourSpace::rgb ? Jp2Colour::kSrgb : Jp2Colour::kCmyk;
}

void writeImageHeader(ByteWriter& out, const Picture& picture)
{
    out.u32(uint32_t(picture.height()));
    out.u32(uint32_t(picture.width()));
    out.u16(picture.channels());
    out.u8(picture.precision() - 1);
    out.u8(kWavelets);
    out.u8(0); // the colour space is known
    out.u8(0); // no intellectual property
}

void writeColour(ByteWriter& out, ColourSpace space)
{
    out.u8(Jp2Colour::kEnumerated);
    out.u8(0); // precedence
    out.u8(0); // approximation
    out.u32(colourOf(space));
}

}

size_t writeJp2Header(ByteWriter& out, const Picture& picture)
{
    using namespace box_type;
    box(out, kSignature, [&] { out.u32(kSignatureContents); });
    box(out, kFileType, [&] {
        out.u32(kBrand);
        out.u32(0); // version
        out.u32(kBrand);
    });
    box(out, kHeader, [&] {
        box(out, kImageHeader, [&] { writeImageHeader(out, picture); });
        box(out, kColour, [&] { writeColour(out, picture.space()); });
    });
    size_t length = out.position();
    out.u32(0);
    out.u32(kCodestream);
    return length;
}

}
