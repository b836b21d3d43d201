// SPDX-License-Identifier: Apache-2.0
// Reading of marker segments, with the checks that keep later stages safe.
#include "codec/j2k/headers.h"

#include <string>

namespace qel::codec::j2k {

namespace {

constexpr uint32_t kMaxTiles = 65535;
constexpr uint64_t kMaxTileComponents = 1 << 20;
// Progression changes of one tile. Real files have a few.
constexpr size_t kMaxProgressions = 256;

// Where the cell number `cell` of a partition begins.
uint32_t cellStart(uint32_t first, uint32_t step, uint64_t cell)
{
    return uint32_t(std::min<uint64_t>(first + cell * step, UINT32_MAX));
}

void checkGrid(const Fields& fields, const Size& size)
{
    const Rect &picture = size.picture, &tile = size.firstTile;
    if (picture.isEmpty()) fields.fail("a picture without samples");
    if (tile.isEmpty()) fields.fail("tiles without samples");
    if (tile.x0 > picture.x0 || tile.y0 > picture.y0 || tile.x1 <= picture.x0 || tile.y1 <= picture.y0)
        fields.fail("the first tile is not where the picture begins");
    uint64_t tiles = uint64_t(size.tilesAcross()) * size.tilesDown();
    if (tiles > kMaxTiles) fields.fail(std::to_string(tiles) + " tiles");
}

Component readComponent(Fields& fields)
{
    Component component;
    int depth = fields.u8();
    component.isSigned = depth >> 7;
    component.precision = (depth & 127) + 1;
    component.dx = uint32_t(fields.u8());
    component.dy = uint32_t(fields.u8());
    if (component.precision > 38) fields.fail("samples of " + std::to_string(component.precision) + " bits");
    if (component.dx == 0 || component.dy == 0) fields.fail("subsampling by 0");
    return component;
}

// The number of a component, in as many bytes as the largest needs.
int readComponentNumber(Fields& fields, const Size& size)
{
    int number = size.components.size() < 257 ? fields.u8() : fields.u16();
    if (size_t(number) >= size.components.size()) fields.fail("component " + std::to_string(number) + " of none");
    return number;
}

Order readOrder(Fields& fields)
{
    int order = fields.u8();
    if (order > int(Order::cprl)) fields.fail("unknown progression order " + std::to_string(order));
    return Order(order);
}

void readPrecincts(Fields& fields, Coding& coding)
{
    for (int r = 0; r <= coding.levels; ++r) {
        int bits = fields.u8();
        coding.precinctWidthBits[r] = bits & 15;
        coding.precinctHeightBits[r] = uint8_t(bits >> 4);
        // Each band has half of it.
        if (r > 0 && ((bits & 15) == 0 || bits >> 4 == 0)) fields.fail("precincts of one sample");
    }
}

// The fields that COD and COC share (T.800 table A.15).
Coding readCoding(Fields& fields, bool hasPrecincts)
{
    Coding coding;
    coding.levels = fields.u8();
    coding.blockWidthBits = fields.u8() + 2;
    coding.blockHeightBits = fields.u8() + 2;
    coding.style = fields.u8();
    int wavelet = fields.u8();
    if (coding.levels > kMaxLevels) fields.fail(std::to_string(coding.levels) + " decomposition levels");
    if (coding.blockWidthBits > 10 || coding.blockHeightBits > 10 ||
        coding.blockWidthBits + coding.blockHeightBits > 12)
        fields.fail("code-blocks that are too large");
    if (coding.style > 63) fields.fail("unknown code-block style " + std::to_string(coding.style));
    if (wavelet > 1) fields.fail("unknown wavelet " + std::to_string(wavelet));
    coding.isReversible = wavelet == 1;
    coding.precinctWidthBits.fill(kDefaultPrecinctBits);
    coding.precinctHeightBits.fill(kDefaultPrecinctBits);
    if (hasPrecincts) readPrecincts(fields, coding);
    fields.finish();
    return coding;
}

Quantization readSteps(Fields fields)
{
    Quantization quantization;
    int style = fields.u8();
    quantization.guardBits = style >> 5;
    if ((style & 31) > 2) fields.fail("unknown quantization " + std::to_string(style & 31));
    quantization.kind = Quantizer(style & 31);
    bool isPlain = quantization.kind == Quantizer::none;
    do {
        int step = isPlain ? fields.u8() << 8 : fields.u16();
        quantization.steps.push_back({step >> 11, step & 0x7FF});
    } while (!fields.atEnd());
    return quantization;
}

void readStyle(const Segment& segment, Parameters& parameters)
{
    Fields fields(segment, "COD");
    int flags = fields.u8();
    if (flags > 7) fields.fail("unknown coding style " + std::to_string(flags));
    TileStyle& style = parameters.style.emplace();
    style.hasSop = flags & 2;
    style.hasEph = flags & 4;
    style.order = readOrder(fields);
    style.layers = fields.u16();
    int transform = fields.u8();
    if (style.layers == 0) fields.fail("no layers");
    if (transform > 1) fields.fail("unknown component transform " + std::to_string(transform));
    style.transformsComponents = transform == 1;
    parameters.coding = readCoding(fields, flags & 1);
}

void readComponentCoding(const Segment& segment, Parameters& parameters, const Size& size)
{
    Fields fields(segment, "COC");
    int component = readComponentNumber(fields, size), flags = fields.u8();
    if (flags > 1) fields.fail("unknown coding style " + std::to_string(flags));
    parameters.componentCoding[component] = readCoding(fields, flags & 1);
}

void readComponentSteps(const Segment& segment, Parameters& parameters, const Size& size)
{
    Fields fields(segment, "QCC");
    int component = readComponentNumber(fields, size);
    parameters.componentQuantization[component] = readSteps(fields);
}

void readRegion(const Segment& segment, Parameters& parameters, const Size& size)
{
    Fields fields(segment, "RGN");
    int component = readComponentNumber(fields, size), style = fields.u8(), shift = fields.u8();
    if (style != 0) fields.fail("unknown region of interest style " + std::to_string(style));
    if (shift > 37) fields.fail("a shift by " + std::to_string(shift) + " bits");
    parameters.roiShifts[component] = shift;
    fields.finish();
}

void readProgressions(const Segment& segment, Parameters& parameters, const Size& size)
{
    Fields fields(segment, "POC");
    int components = int(size.components.size());
    size_t componentBytes = components < 257 ? 1 : 2;
    do {
        Progression change;
        change.firstResolution = fields.u8();
        change.firstComponent = int(fields.number(componentBytes));
        change.endLayer = fields.u16();
        change.endResolution = fields.u8();
        int end = int(fields.number(componentBytes));
        // 0 stands for what the field has no room for.
        change.endComponent = end == 0 ? components : std::min(end, components);
        change.order = readOrder(fields);
        if (parameters.progressions.size() == kMaxProgressions) fields.fail("too many progression changes");
        parameters.progressions.push_back(change);
    } while (!fields.atEnd());
}

// The value for the component, or else for all, if there is one.
template <class T> const T* find(const std::map<int, T>& ofComponents, const std::optional<T>& ofAll, int component)
{
    auto found = ofComponents.find(component);
    if (found != ofComponents.end()) return &found->second;
    return ofAll ? &*ofAll : nullptr;
}

}

uint32_t Size::tilesAcross() const { return ceilDivide(picture.x1 - firstTile.x0, firstTile.width()); }

uint32_t Size::tilesDown() const { return ceilDivide(picture.y1 - firstTile.y0, firstTile.height()); }

Rect Size::tile(uint32_t index) const
{
    uint64_t column = index % tilesAcross(), row = index / tilesAcross();
    uint32_t width = firstTile.width(), height = firstTile.height();
    return {std::max(picture.x0, cellStart(firstTile.x0, width, column)),
            std::max(picture.y0, cellStart(firstTile.y0, height, row)),
            std::min(picture.x1, cellStart(firstTile.x0, width, column + 1)),
            std::min(picture.y1, cellStart(firstTile.y0, height, row + 1))};
}

Rect Size::component(size_t index) const { return subsampled(picture, components[index].dx, components[index].dy); }

Size readSize(const Segment& segment)
{
    Fields fields(segment, "SIZ");
    Size size;
    fields.u16(); // capabilities: what goes beyond these shows in the segments that need it
    size.picture.x1 = fields.u32();
    size.picture.y1 = fields.u32();
    size.picture.x0 = fields.u32();
    size.picture.y0 = fields.u32();
    uint32_t tileWidth = fields.u32(), tileHeight = fields.u32();
    size.firstTile.x0 = fields.u32();
    size.firstTile.y0 = fields.u32();
    size.firstTile.x1 = cellStart(size.firstTile.x0, tileWidth, 1);
    size.firstTile.y1 = cellStart(size.firstTile.y0, tileHeight, 1);
    checkGrid(fields, size);
    size_t count = size_t(fields.u16());
    if (count < 1 || count > 16384) fields.fail(std::to_string(count) + " components");
    if (fields.left() < 3 * count) fields.fail("too short");
    if (count * size.tiles() > kMaxTileComponents) fields.fail("more tiles and components than supported");
    for (size_t i = 0; i < count; ++i) size.components.push_back(readComponent(fields));
    fields.finish();
    return size;
}

Step Quantization::step(int resolution, BandKind band) const
{
    if (kind == Quantizer::derived) {
        // One less for each level that the band lies above the lowest (E-5).
        return {std::max(0, steps[0].exponent - std::max(0, resolution - 1)), steps[0].mantissa};
    }
    // In the file HL comes before LH.
    static constexpr int kPlaces[] = {0, 2, 1, 3};
    size_t index = resolution == 0 ? 0 : size_t(3 * (resolution - 1) + kPlaces[int(band)]);
    if (index >= steps.size()) throw CodecError("quantization steps are missing");
    return steps[index];
}

void Parameters::read(const Segment& segment, const Size& size)
{
    switch (segment.code) {
    case marker::kCod:
        return readStyle(segment, *this);
    case marker::kCoc:
        return readComponentCoding(segment, *this, size);
    case marker::kQcd:
        quantization = readSteps(Fields(segment, "QCD"));
        return;
    case marker::kQcc:
        return readComponentSteps(segment, *this, size);
    case marker::kRgn:
        return readRegion(segment, *this, size);
    case marker::kPoc:
        return readProgressions(segment, *this, size);
    default:
        return;
    }
}

const Coding& TileParameters::coding(int component) const
{
    const Coding* own = find(tile_.componentCoding, tile_.coding, component);
    return own ? *own : *find(main_.componentCoding, main_.coding, component);
}

const Quantization& TileParameters::quantization(int component) const
{
    const Quantization* own = find(tile_.componentQuantization, tile_.quantization, component);
    return own ? *own : *find(main_.componentQuantization, main_.quantization, component);
}

int TileParameters::roiShift(int component) const
{
    for (const Parameters* parameters : {&tile_, &main_})
        if (auto found = parameters->roiShifts.find(component); found != parameters->roiShifts.end())
            return found->second;
    return 0;
}

std::vector<Progression> TileParameters::progressions() const
{
    if (!tile_.progressions.empty()) return tile_.progressions;
    if (!main_.progressions.empty()) return main_.progressions;
    Progression all;
    all.endComponent = INT32_MAX;
    all.endLayer = style().layers;
    all.order = style().order;
    return {all};
}

}
