// SPDX-License-Identifier: Apache-2.0
// What the marker segments in the headers of a JPEG 2000 codestream say (T.800 Annex A).
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "codec/j2k/geometry.h"
#include "codec/j2k/markers.h"

namespace qel::codec::j2k {

inline constexpr int kMaxLevels = 32;
// Of a side of precincts that are not told: as large as they can be.
inline constexpr int kDefaultPrecinctBits = 15;

struct Component {
    int precision = 0; // bits, 1 to 38
    bool isSigned = false;
    uint32_t dx = 1, dy = 1; // sampled every dx-th column and dy-th row of the reference grid, 1 to 255
};

// SIZ: the reference grid and what lies on it.
struct Size {
    Rect picture;
    Rect firstTile; // the whole cell of the partition, which reaches to 2^32 - 1 at most
    std::vector<Component> components;

    uint32_t tilesAcross() const;
    uint32_t tilesDown() const;
    uint32_t tiles() const { return tilesAcross() * tilesDown(); }
    // Part of the picture in a tile; tiles count row by row from the top left.
    Rect tile(uint32_t index) const;
    Rect component(size_t index) const;
};

Size readSize(const Segment& segment);

enum class Order { lrcp, rlcp, rpcl, pcrl, cprl };

// Packets in the order `order`, of those that did not come before: a part of the resolutions, components and layers,
// each up to, not including, the end.
struct Progression {
    int firstResolution = 0, endResolution = kMaxLevels + 1;
    int firstComponent = 0, endComponent = 0;
    int endLayer = 0;
    Order order = Order::lrcp;
};

// COD: what holds for a whole tile.
struct TileStyle {
    Order order = Order::lrcp;
    int layers = 1;                    // 1 to 65535
    bool transformsComponents = false; // the first three
    bool hasSop = false, hasEph = false;
};

namespace style {
inline constexpr int kBypass = 1, kReset = 2, kTerminateEvery = 4, kVerticallyCausal = 8, kPredictableTermination = 16,
                     kSegmentationSymbols = 32;
}

// COD and COC: how a component is transformed and coded.
struct Coding {
    int levels = 0;                              // of decomposition, 0 to 32
    int blockWidthBits = 6, blockHeightBits = 6; // code-blocks of 4 to 1024, 4096 samples at most
    int style = 0;                               // bits of style
    bool isReversible = false;                   // 5/3, else 9/7
    std::array<uint8_t, kMaxLevels + 1> precinctWidthBits, precinctHeightBits; // by resolution
};

enum class Quantizer { none, derived, expounded };

// A quantization step is 2^(range - exponent) * (1 + mantissa / 2048), for a band with samples of `range` bits.
struct Step {
    int exponent = 0, mantissa = 0;
};

// QCD and QCC.
struct Quantization {
    Quantizer kind = Quantizer::none;
    int guardBits = 0;
    std::vector<Step> steps; // as they stand in the segment: one if derived, else one for each band

    // Of a band in resolution 0 to `levels`. Throws CodecError where the segment does not reach that far.
    Step step(int resolution, BandKind kind) const;
};

// Of the main header, or of all headers of one tile.
class Parameters {
public:
    std::optional<TileStyle> style;
    std::optional<Coding> coding;
    std::map<int, Coding> componentCoding;
    std::optional<Quantization> quantization;
    std::map<int, Quantization> componentQuantization;
    std::map<int, int> roiShifts; // by component: coefficients of the region of interest are shifted up
    std::vector<Progression> progressions;

    // Takes what the segment says, if it is one of COD, COC, QCD, QCC, RGN and POC. Throws CodecError.
    void read(const Segment& segment, const Size& size);
};

// What holds for a tile: its own headers before the main one, and there what is said of a component before what is said
// of all.
class TileParameters {
public:
    // The main header has to have a COD and a QCD.
    TileParameters(const Parameters& main, const Parameters& tile) : main_(main), tile_(tile) {}

    const TileStyle& style() const { return tile_.style ? *tile_.style : *main_.style; }
    const Coding& coding(int component) const;
    const Quantization& quantization(int component) const;
    int roiShift(int component) const;
    std::vector<Progression> progressions() const;

private:
    const Parameters &main_, &tile_;
};

}
