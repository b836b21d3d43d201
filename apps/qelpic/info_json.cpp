// SPDX-License-Identifier: Apache-2.0
// qelpic info --json.
#include <cstdio>

#include "codec/formats/colour_management.h"
#include "qelpic/info.h"

namespace qel::qelpic {
namespace {

using namespace codec;

Json jsonOf(const jpeg::Info& info)
{
    Json json = {{"format", "JPEG"},      {"process", nameOf(info.process)}, {"width", info.width},
                 {"height", info.height}, {"colour", nameOf(info.colour)},   {"precision", info.precision}};
    for (const jpeg::Component& component : info.components)
        json["components"].push_back({{"id", component.id},
                                      {"width", component.width},
                                      {"height", component.height},
                                      {"sampling", {component.h, component.v}}});
    json["scans"] = info.scans;
    json["restart_interval"] = info.restartInterval;
    if (info.process == jpeg::Process::lossless) {
        json["predictor"] = info.predictor;
        json["point_transform"] = info.pointTransform;
    }
    return json;
}

void addJp2(const j2k::Jp2File& jp2, Json& json)
{
    for (const j2k::Jp2Colour& colour : jp2.colours) json["colours"].push_back(nameOf(colour));
    if (jp2.palette) json["palette"] = {{"entries", jp2.palette->entries}, {"columns", jp2.palette->columns.size()}};
    for (const j2k::Jp2Definition& definition : jp2.definitions)
        json["channels"].push_back({{"channel", definition.channel}, {"is", nameOf(definition)}});
}

void addCoding(const j2k::Parameters& parameters, Json& json)
{
    const j2k::Coding& coding = *parameters.coding;
    json["progression"] = j2k::nameOf(parameters.style->order);
    json["layers"] = parameters.style->layers;
    json["reversible"] = coding.isReversible;
    json["levels"] = coding.levels;
    json["component_transform"] = parameters.style->transformsComponents;
    json["code_block_size"] = {1 << coding.blockWidthBits, 1 << coding.blockHeightBits};
    json["code_block_style"] = namesOfStyle(coding.style);
    json["quantization"] = j2k::nameOf(parameters.quantization->kind);
}

Json jsonOf(const j2k::File& file)
{
    const j2k::Size& size = file.codestream->size();
    Json json = {{"format", file.jp2 ? "JP2" : "JPEG 2000 codestream"},
                 {"width", size.picture.width()},
                 {"height", size.picture.height()},
                 {"offset", {size.picture.x0, size.picture.y0}}};
    if (file.jp2) addJp2(*file.jp2, json);
    for (size_t c = 0; c < size.components.size(); ++c) {
        const j2k::Component& component = size.components[c];
        json["components"].push_back({{"width", size.component(c).width()},
                                      {"height", size.component(c).height()},
                                      {"precision", component.precision},
                                      {"signed", component.isSigned},
                                      {"subsampling", {component.dx, component.dy}}});
    }
    json["tiles"] = size.tiles();
    json["tile_size"] = {size.firstTile.width(), size.firstTile.height()};
    addCoding(file.codestream->parameters(), json);
    return json;
}

Json jsonOf(const PlainPicture& plain)
{
    return {{"format", plain.format},
            {"width", plain.picture.width()},
            {"height", plain.picture.height()},
            {"colour", nameOf(plain.picture.space())},
            {"alpha", plain.picture.hasAlpha()},
            {"precision", plain.picture.precision()},
            {"signed", plain.picture.isSigned()}};
}

void addMetadata(const Metadata& metadata, Json& json)
{
    if (!metadata.icc.empty())
        json["icc_profile"] = {{"bytes", metadata.icc.size()}, {"name", nameOfProfile(metadata.icc)}};
    if (!metadata.exif.empty())
        json["exif"] = {{"bytes", metadata.exif.size()}, {"orientation", orientationOf(metadata.exif)}};
    if (!metadata.xmp.empty()) json["xmp"] = {{"bytes", metadata.xmp.size()}};
    if (auto& density = metadata.density) {
        double perInch = density->isPerMetre ? kMetresPerInch : 1;
        json["density"] = {{"x", density->x * perInch},
                           {"y", density->y * perInch},
                           {"unit", density->isPerMetre ? "dots per inch" : "aspect ratio"}};
    }
    if (!metadata.comments.empty()) json["comments"] = metadata.comments;
    if (!metadata.others.empty()) json["others"] = metadata.others;
}

}

Json jsonOf(const Description& description)
{
    Json json = {{"file", description.path}};
    json.update(std::visit([](auto& headers) { return jsonOf(headers); }, description.headers));
    addMetadata(description.metadata, json);
    json["bytes"] = description.file.size();
    json["bits_per_pixel"] = description.bitsPerPixel();
    return json;
}

void print(const Json& json) { std::puts(json.dump(2, ' ', false, Json::error_handler_t::replace).c_str()); }

}
