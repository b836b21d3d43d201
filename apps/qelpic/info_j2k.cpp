// SPDX-License-Identifier: Apache-2.0
// qelpic info for JPEG 2000 files.
#include <algorithm>
#include <cstdio>
#include <string>

#include "qelpic/info.h"

namespace qel::qelpic {
namespace {

using namespace codec;

std::string product(uint64_t a, uint64_t b) { return std::to_string(a) + " x " + std::to_string(b); }

void printJp2(const j2k::Jp2File& jp2)
{
    for (const j2k::Jp2Colour& colour : jp2.colours) {
        std::printf("colour           %s", nameOf(colour).c_str());
        std::puts(colour.profile.empty() ? "" : (" of " + std::to_string(colour.profile.size()) + " bytes").c_str());
    }
    if (jp2.palette)
        std::printf("palette          %d entries of %zu columns\n", jp2.palette->entries, jp2.palette->columns.size());
    for (const j2k::Jp2Definition& definition : jp2.definitions)
        std::printf("channel %-8d %s\n", definition.channel, nameOf(definition).c_str());
}

bool areAlike(const j2k::Component& a, const j2k::Component& b)
{
    return a.precision == b.precision && a.isSigned == b.isSigned && a.dx == b.dx && a.dy == b.dy;
}

// One line for components that are alike.
void printComponents(const j2k::Size& size)
{
    for (size_t first = 0, next; first < size.components.size(); first = next) {
        const j2k::Component& component = size.components[first];
        for (next = first + 1; next < size.components.size() && areAlike(component, size.components[next]);) ++next;
        std::string numbers = std::to_string(first);
        if (next - first > 1) numbers.append("-").append(std::to_string(next - 1));
        j2k::Rect rect = size.component(first);
        std::printf("component %-6s %s, %d bits%s, subsampling %ux%u\n", numbers.c_str(),
                    product(rect.width(), rect.height()).c_str(), component.precision,
                    component.isSigned ? " signed" : "", component.dx, component.dy);
    }
}

void printCoding(const j2k::Parameters& parameters)
{
    const j2k::TileStyle& style = *parameters.style;
    const j2k::Coding& coding = *parameters.coding;
    std::printf("progression      %s%s\n", nameOf(style.order),
                parameters.progressions.empty() ? "" : ", with changes");
    std::printf("layers           %d\n", style.layers);
    std::printf("wavelet          %s, %d levels\n", coding.isReversible ? "5/3 reversible" : "9/7 irreversible",
                coding.levels);
    std::printf("colour transform %s\n", style.transformsComponents ? "yes" : "no");
    std::printf("code-blocks      %s", product(1u << coding.blockWidthBits, 1u << coding.blockHeightBits).c_str());
    for (const char* name : namesOfStyle(coding.style)) std::printf(", %s", name);
    std::puts("");
    std::printf("quantization     %s, %d guard bits\n", nameOf(parameters.quantization->kind),
                parameters.quantization->guardBits);
}

}

std::string nameOf(const j2k::Jp2Definition& definition)
{
    switch (definition.kind) {
    case j2k::Jp2Definition::kColour:
        return "colour " + std::to_string(definition.association);
    case j2k::Jp2Definition::kOpacity:
        return "opacity";
    case j2k::Jp2Definition::kPremultipliedOpacity:
        return "premultiplied opacity";
    default:
        return "unspecified";
    }
}

std::vector<const char*> namesOfStyle(int style)
{
    static constexpr const char* kNames[] = {"bypass",
                                             "reset",
                                             "terminate every pass",
                                             "vertically causal",
                                             "predictable termination",
                                             "segmentation symbols"};
    std::vector<const char*> names;
    for (int bit = 0; bit < 6; ++bit)
        if (style >> bit & 1) names.push_back(kNames[bit]);
    return names;
}

void print(const codec::j2k::File& file)
{
    const j2k::Size& size = file.codestream->size();
    const j2k::Rect &picture = size.picture, &tile = size.firstTile;
    std::printf("format           JPEG 2000, %s\n", file.jp2 ? "JP2" : "codestream");
    std::printf("size             %s", product(picture.width(), picture.height()).c_str());
    if (picture.x0 || picture.y0) std::printf(", offset %u, %u", picture.x0, picture.y0);
    std::puts("");
    if (file.jp2) printJp2(*file.jp2);
    printComponents(size);
    std::printf("tiles            %u", size.tiles());
    if (size.tiles() > 1) std::printf(" of %s", product(tile.width(), tile.height()).c_str());
    if (tile.x0 || tile.y0) std::printf(", offset %u, %u", tile.x0, tile.y0);
    std::puts("");
    printCoding(file.codestream->parameters());
}

}
