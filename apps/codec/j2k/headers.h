// What the marker segments in the headers of a JPEG 2000 codestream say (T.800 Annex A).
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "codec/j2k/geometry.h"
#include "codec/j2k/markers.h"

namespace qel::codec {

inline constexpr int kJ2kMaxLevels = 32;
// Of a side of precincts that are not told: as large as they can be.
inline constexpr int kJ2kDefaultPrecinctBits = 15;

struct J2kComponent {
    int precision = 0; // bits, 1 to 38
    bool isSigned = false;
    uint32_t dx = 1, dy = 1; // sampled every dx-th column and dy-th row of the reference grid, 1 to 255
};

// SIZ: the reference grid and what lies on it.
struct J2kSize {
    J2kRect picture;
    J2kRect firstTile; // the whole cell of the partition, which reaches to 2^32 - 1 at most
    std::vector<J2kComponent> components;

    uint32_t tilesAcross() const;
    uint32_t tilesDown() const;
    uint32_t tiles() const { return tilesAcross() * tilesDown(); }
    // Part of the picture in a tile; tiles count row by row from the top left.
    J2kRect tile(uint32_t index) const;
    J2kRect component(size_t index) const;
};

J2kSize readJ2kSize(const Segment& segment);

enum class J2kOrder { lrcp, rlcp, rpcl, pcrl, cprl };

// Packets in the order `order`, of those that did not come before: a part of the resolutions, components and layers,
// each up to, not including, the end.
struct J2kProgression {
    int firstResolution = 0, endResolution = kJ2kMaxLevels + 1;
    int firstComponent = 0, endComponent = 0;
    int endLayer = 0;
    J2kOrder order = J2kOrder::lrcp;
};

// COD: what holds for a whole tile.
struct J2kTileStyle {
    J2kOrder order = J2kOrder::lrcp;
    int layers = 1;                    // 1 to 65535
    bool transformsComponents = false; // the first three
    bool hasSop = false, hasEph = false;
};

namespace j2k_style {
inline constexpr int kBypass = 1, kReset = 2, kTerminateEvery = 4, kVerticallyCausal = 8, kPredictableTermination = 16,
                     kSegmentationSymbols = 32;
}

// COD and COC: how a component is transformed and coded.
struct J2kCoding {
    int levels = 0;                              // of decomposition, 0 to 32
    int blockWidthBits = 6, blockHeightBits = 6; // code-blocks of 4 to 1024, 4096 samples at most
    int style = 0;                               // bits of j2k_style
    bool isReversible = false;                   // 5/3, else 9/7
    std::array<uint8_t, kJ2kMaxLevels + 1> precinctWidthBits, precinctHeightBits; // by resolution
};

enum class J2kQuantizer { none, derived, expounded };

// A quantization step is 2^(range - exponent) * (1 + mantissa / 2048), for a band with samples of `range` bits.
struct J2kStep {
    int exponent = 0, mantissa = 0;
};

// QCD and QCC.
struct J2kQuantization {
    J2kQuantizer kind = J2kQuantizer::none;
    int guardBits = 0;
    std::vector<J2kStep> steps; // as they stand in the segment: one if derived, else one for each band

    // Of a band in resolution 0 to `levels`. Throws CodecError where the segment does not reach that far.
    J2kStep step(int resolution, J2kBandKind kind) const;
};

// Of the main header, or of all headers of one tile.
class J2kParameters {
public:
    std::optional<J2kTileStyle> style;
    std::optional<J2kCoding> coding;
    std::map<int, J2kCoding> componentCoding;
    std::optional<J2kQuantization> quantization;
    std::map<int, J2kQuantization> componentQuantization;
    std::map<int, int> roiShifts; // by component: coefficients of the region of interest are shifted up
    std::vector<J2kProgression> progressions;

    // Takes what the segment says, if it is one of COD, COC, QCD, QCC, RGN and POC. Throws CodecError.
    void read(const Segment& segment, const J2kSize& size);
};

// What holds for a tile: its own headers before the main one, and there what is said of a component before what is said
// of all.
class J2kTileParameters {
public:
    // The main header has to have a COD and a QCD.
    J2kTileParameters(const J2kParameters& main, const J2kParameters& tile) : main_(main), tile_(tile) {}

    const J2kTileStyle& style() const { return tile_.style ? *tile_.style : *main_.style; }
    const J2kCoding& coding(int component) const;
    const J2kQuantization& quantization(int component) const;
    int roiShift(int component) const;
    std::vector<J2kProgression> progressions() const;

private:
    const J2kParameters &main_, &tile_;
};

}
