// SPDX-License-Identifier: Apache-2.0
// Reading of boxes.
#include "codec/j2k/boxes.h"

#include <algorithm>
#include <string>
#include <utility>

#include "codec/base/fields.h"
#include "codec/j2k/box_types.h"

namespace qel::codec::j2k {

namespace {

using namespace box_type;

constexpr int kDepthsDiffer = 255;
constexpr int kMaxPrecision = 31; // of palettes here; they may have 38 bits

Fields fieldsOf(Bytes file, const Box& box, const char* name)
{
    return {file.subspan(box.begin, box.end - box.begin), box.begin, name};
}

void readImageHeader(Fields fields, Jp2File& jp2)
{
    jp2.height = fields.u32();
    jp2.width = fields.u32();
    jp2.components = fields.u16();
    int depth = fields.u8(), compression = fields.u8();
    if (jp2.width == 0 || jp2.height == 0) fields.fail("a picture without samples");
    if (compression != 7) fields.fail("unknown compression " + std::to_string(compression));
    if (depth != kDepthsDiffer) jp2.depths = {depth};
}

void readDepths(Fields fields, Jp2File& jp2)
{
    Bytes depths = fields.takeRest();
    jp2.depths.assign(depths.begin(), depths.end());
}

void readColour(Fields fields, Jp2File& jp2)
{
    Jp2Colour colour;
    colour.method = fields.u8();
    fields.take(2); // precedence and approximation, for readers that know several methods
    if (colour.method == Jp2Colour::kEnumerated)
        colour.space = fields.u32();
    else
        colour.profile = fields.takeRest();
    jp2.colours.push_back(colour);
}

void readPalette(Fields fields, Jp2File& jp2)
{
    Jp2Palette palette;
    palette.entries = fields.u16();
    size_t columns = size_t(fields.u8());
    if (palette.entries < 1 || palette.entries > 1024 || columns < 1) fields.fail("a palette without colours");
    for (uint8_t depth : fields.take(columns)) {
        palette.columns.push_back({(depth & 127) + 1, depth > 127});
        if (palette.columns.back().precision > kMaxPrecision) fields.fail("samples that are too deep");
    }
    for (int entry = 0; entry < palette.entries; ++entry)
        for (auto [precision, isSigned] : palette.columns) {
            uint64_t value = fields.number(size_t(precision + 7) / 8) << (64 - precision);
            palette.values.push_back(
                int32_t(isSigned ? int64_t(value) >> (64 - precision) : value >> (64 - precision)));
        }
    jp2.palette = std::move(palette);
}

void readMapping(Fields fields, Jp2File& jp2)
{
    std::vector<Jp2Channel> channels;
    while (!fields.atEnd()) {
        Jp2Channel channel;
        channel.component = fields.u16();
        int kind = fields.u8(), column = fields.u8();
        if (kind > 1) fields.fail("unknown kind of channel " + std::to_string(kind));
        if (kind == 1) channel.column = column;
        channels.push_back(channel);
    }
    jp2.channels = std::move(channels);
}

void readDefinitions(Fields fields, Jp2File& jp2)
{
    std::vector<Jp2Definition> definitions;
    for (int count = fields.u16(); count > 0; --count) {
        Jp2Definition definition;
        definition.channel = fields.u16();
        definition.kind = fields.u16();
        definition.association = fields.u16();
        definitions.push_back(definition);
    }
    fields.finish();
    jp2.definitions = std::move(definitions);
}

void readHeaderBox(Bytes file, const Box& box, Jp2File& jp2)
{
    switch (box.type) {
    case kImageHeader:
        return readImageHeader(fieldsOf(file, box, "image header box"), jp2);
    case kDepths:
        return readDepths(fieldsOf(file, box, "bits per component box"), jp2);
    case kColour:
        return readColour(fieldsOf(file, box, "colour box"), jp2);
    case kPalette:
        return readPalette(fieldsOf(file, box, "palette box"), jp2);
    case kMapping:
        return readMapping(fieldsOf(file, box, "component mapping box"), jp2);
    case kDefinitions:
        return readDefinitions(fieldsOf(file, box, "channel definition box"), jp2);
    default:
        return;
    }
}

// False, and a warning, where `step` throws CodecError.
template <class Step> bool attempt(Jp2File& jp2, Step step)
{
    try {
        step();
        return true;
    } catch (const CodecError& error) {
        jp2.warnings.push_back(error.what());
        return false;
    }
}

void readHeader(Bytes file, const Box& header, Jp2File& jp2)
{
    Box box;
    box.end = header.begin;
    while (box.end < header.end && attempt(jp2, [&] { box = readBox(file, box.end, header.end); }))
        attempt(jp2, [&] {
            if (box.isCut) throw CodecError("a box reaches beyond the one that it lies in", box.begin);
            readHeaderBox(file, box, jp2);
        });
}

// Leaves out what names components or columns that are not there.
void checkChannels(Jp2File& jp2)
{
    auto leaveOut = [&](const char* what) { jp2.warnings.push_back(std::string(what) + ": it is left out"); };
    size_t columns = jp2.palette ? jp2.palette->columns.size() : 0;
    bool areSound = std::ranges::all_of(jp2.channels, [&](const Jp2Channel& channel) {
        return channel.component < jp2.components && (!channel.column || size_t(*channel.column) < columns);
    });
    if (jp2.palette.has_value() == jp2.channels.empty() || !areSound) {
        leaveOut("the palette and the mapping of components do not fit together");
        jp2.palette.reset();
        jp2.channels.clear();
    }
    int channels = jp2.palette ? int(jp2.channels.size()) : jp2.components;
    std::vector<bool> isDefined(size_t(channels), false);
    for (const Jp2Definition& definition : jp2.definitions) {
        bool isThere = definition.channel < channels;
        if (isThere && !isDefined[size_t(definition.channel)]) {
            isDefined[size_t(definition.channel)] = true;
            continue;
        }
        leaveOut(isThere ? "the channel definition is about a channel twice"
                         : "the channel definition is about channels that are not there");
        jp2.definitions.clear();
        break;
    }
}

}

std::string nameOf(const Jp2Colour& colour)
{
    if (colour.method != Jp2Colour::kEnumerated) return "ICC profile";
    constexpr std::pair<uint32_t, const char*> kNames[] = {
        {Jp2Colour::kCmyk, "CMYK"},   {Jp2Colour::kSrgb, "sRGB"},    {Jp2Colour::kGrey, "grey"},
        {Jp2Colour::kSycc, "sYCC"},   {Jp2Colour::kEsrgb, "e-sRGB"}, {Jp2Colour::kRommRgb, "ROMM-RGB"},
        {Jp2Colour::kEsycc, "e-sYCC"}};
    for (auto [space, name] : kNames)
        if (colour.space == space) return name;
    return "colour space " + std::to_string(colour.space);
}

Box readBox(Bytes file, size_t at, size_t end)
{
    Fields fields(file.subspan(at, end - at), at, "box");
    uint64_t length = fields.u32();
    Box box;
    box.type = fields.u32();
    if (length == 1) length = fields.u64();
    box.begin = fields.position();
    if (length == 0) length = end - at;
    if (length < box.begin - at) throw CodecError("a box of " + std::to_string(length) + " bytes", at);
    box.isCut = length > end - at;
    box.end = box.isCut ? end : at + size_t(length);
    return box;
}

bool isJp2(Bytes file)
{
    Fields fields(file, 0, "signature box");
    return fields.left() >= 12 && fields.u32() == 12 && fields.u32() == kSignature;
}

Jp2File readJp2(Bytes file)
{
    if (!isJp2(file)) throw CodecError("not a JP2 file", 0);
    Jp2File jp2;
    Box box;
    do {
        if (box.end == file.size()) throw CodecError("the file holds no codestream", file.size());
        box = readBox(file, box.end, file.size());
        if (box.type == kHeader) readHeader(file, box, jp2);
    } while (box.type != kCodestream);
    jp2.codestreamBegin = box.begin;
    jp2.codestreamEnd = box.end;
    if (jp2.components == 0) jp2.warnings.push_back("the image header box is missing");
    checkChannels(jp2);
    return jp2;
}

}
