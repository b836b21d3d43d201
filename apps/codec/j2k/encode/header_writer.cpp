// SPDX-License-Identifier: Apache-2.0
// Marker segments of the headers.
#include "codec/j2k/encode/header_writer.h"

#include <algorithm>

namespace qel::codec::j2k {

namespace {

void put(ByteWriter& out, uint8_t code)
{
    out.u8(0xFF);
    out.u8(code);
}

// A marker and the length of its parameters.
void begin(ByteWriter& out, uint8_t code, size_t parameterBytes)
{
    put(out, code);
    out.u16(int(2 + parameterBytes));
}

void writeSize(ByteWriter& out, const Size& size)
{
    begin(out, marker::kSiz, 36 + 3 * size.components.size());
    out.u16(0); // no restrictions beyond the standard, no extensions
    out.u32(size.picture.x1);
    out.u32(size.picture.y1);
    out.u32(size.picture.x0);
    out.u32(size.picture.y0);
    out.u32(size.firstTile.width());
    out.u32(size.firstTile.height());
    out.u32(size.firstTile.x0);
    out.u32(size.firstTile.y0);
    out.u16(int(size.components.size()));
    for (const Component& component : size.components) {
        out.u8((component.isSigned ? 128 : 0) | (component.precision - 1));
        out.u8(int(component.dx));
        out.u8(int(component.dy));
    }
}

bool hasPrecincts(const Coding& coding)
{
    auto isSmall = [](int bits) { return bits < kDefaultPrecinctBits; };
    auto any = [&](auto& bits) { return std::any_of(bits.begin(), bits.begin() + coding.levels + 1, isSmall); };
    return any(coding.precinctWidthBits) || any(coding.precinctHeightBits);
}

void writeCoding(ByteWriter& out, const TileStyle& style, const Coding& coding)
{
    bool isDivided = hasPrecincts(coding);
    begin(out, marker::kCod, size_t(10 + (isDivided ? coding.levels + 1 : 0)));
    out.u8((isDivided ? 1 : 0) | (style.hasSop ? 2 : 0) | (style.hasEph ? 4 : 0));
    out.u8(int(style.order));
    out.u16(style.layers);
    out.u8(style.transformsComponents);
    out.u8(coding.levels);
    out.u8(coding.blockWidthBits - 2);
    out.u8(coding.blockHeightBits - 2);
    out.u8(coding.style);
    out.u8(coding.isReversible);
    for (size_t r = 0; isDivided && r <= size_t(coding.levels); ++r)
        out.u8(coding.precinctHeightBits[r] << 4 | coding.precinctWidthBits[r]);
}

void writeQuantization(ByteWriter& out, const Quantization& quantization)
{
    bool isPlain = quantization.kind == Quantizer::none;
    begin(out, marker::kQcd, 1 + (isPlain ? 1 : 2) * quantization.steps.size());
    out.u8(quantization.guardBits << 5 | int(quantization.kind));
    for (const Step& step : quantization.steps)
        isPlain ? out.u8(step.exponent << 3) : out.u16(step.exponent << 11 | step.mantissa);
}

void writeComment(ByteWriter& out, std::string_view text)
{
    begin(out, marker::kCom, 2 + text.size());
    out.u16(1); // text
    out.text(text);
}

}

void writeMainHeader(ByteWriter& out, const Size& size, const Parameters& parameters,
                     const std::vector<std::string>& comments)
{
    put(out, marker::kSoc);
    writeSize(out, size);
    writeCoding(out, *parameters.style, *parameters.coding);
    writeQuantization(out, *parameters.quantization);
    writeComment(out, kComment);
    for (const std::string& comment : comments) writeComment(out, comment);
}

size_t beginTile(ByteWriter& out, uint32_t tile)
{
    size_t position = out.position();
    begin(out, marker::kSot, 8);
    out.u16(int(tile));
    out.u32(0); // the length
    out.u8(0);  // tile-part 0 of 1
    out.u8(1);
    put(out, marker::kSod);
    return position;
}

void finishTile(ByteWriter& out, size_t begin) { out.setLength(begin + 6, begin); }

void writeEnd(ByteWriter& out) { put(out, marker::kEoc); }

}
