// SPDX-License-Identifier: Apache-2.0
// From options to headers.
#include "codec/j2k/encode/options.h"

#include <bit>
#include <cmath>
#include <string>

#include "codec/base/error.h"
#include "codec/j2k/encode/band_energy.h"

namespace qel::codec::j2k {

namespace {

constexpr int kUsualLevels = 5;
// Steps are not made so fine that coefficients would exceed the 31 bits of code-blocks; floats have fewer.
constexpr int kMaxExponent = 28;
// Coefficients may exceed the nominal range of their band. For samples of magnitude 1, levels of the 5/3 filters make
// up to 1.72 of it in a low half and 2.87 in a high one, which nominally has 2; those of 9/7 1.38 and 2.63. With one
// more bit for the differences of the reversible component transform that fits all bands.
constexpr int kGuardBits = 2;
constexpr uint32_t kMaxTiles = 65535;

void require(bool isGood, const std::string& what)
{
    if (!isGood) throw CodecError(what);
}

std::string product(uint64_t a, uint64_t b) { return std::to_string(a) + "x" + std::to_string(b); }

bool isPowerOfTwo(int64_t number, int64_t low, int64_t high)
{
    return number >= low && number <= high && std::has_single_bit(uint64_t(number));
}

int levelsFor(const PictureForm& picture, const EncodeOptions& options)
{
    if (options.levels) return *options.levels;
    auto [width, height] = options.tile.value_or(std::pair(UINT32_MAX, UINT32_MAX));
    uint32_t side = std::min({width, height, uint32_t(picture.width()), uint32_t(picture.height())});
    return std::min(kUsualLevels, int(std::bit_width(side)) - 1);
}

void setPrecincts(const EncodeOptions& options, Coding& coding)
{
    coding.precinctWidthBits.fill(kDefaultPrecinctBits);
    coding.precinctHeightBits.fill(kDefaultPrecinctBits);
    require(options.precincts.size() <= size_t(coding.levels) + 1, "more sizes of precincts than resolutions");
    for (int r = 0; r <= coding.levels && !options.precincts.empty(); ++r) {
        size_t fromTop = std::min(size_t(coding.levels - r), options.precincts.size() - 1);
        auto [width, height] = options.precincts[fromTop];
        // Above the lowest resolution each band has half of it.
        int least = r > 0 ? 2 : 1;
        require(isPowerOfTwo(width, least, 32768) && isPowerOfTwo(height, least, 32768),
                "precincts of " + product(width, height) + ": sides have to be powers of 2, " + std::to_string(least) +
                    " to 32768");
        coding.precinctWidthBits[size_t(r)] = uint8_t(std::countr_zero(width));
        coding.precinctHeightBits[size_t(r)] = uint8_t(std::countr_zero(height));
    }
}

Coding codingFor(const PictureForm& picture, const EncodeOptions& options)
{
    Coding coding;
    coding.levels = levelsFor(picture, options);
    require(coding.levels >= 0 && coding.levels <= kMaxLevels,
            std::to_string(coding.levels) + " decomposition levels: there can be 0 to 32");
    int width = options.blockWidth, height = options.blockHeight;
    require(isPowerOfTwo(width, 4, 1024) && isPowerOfTwo(height, 4, 1024) && width * height <= 4096,
            "code-blocks of " + product(uint64_t(width), uint64_t(height)) +
                ": sides have to be powers of 2, 4 to 1024, and the product 4096 at most");
    coding.blockWidthBits = std::countr_zero(unsigned(width));
    coding.blockHeightBits = std::countr_zero(unsigned(height));
    coding.isReversible = options.isLossless;
    coding.style = options.style;
    if (terminationFor(options) == Termination::predictable) coding.style |= style::kPredictableTermination;
    setPrecincts(options, coding);
    return coding;
}

// Bits that a band has beyond the samples.
int gainBits(BandKind kind) { return kind == BandKind::ll ? 0 : kind == BandKind::hh ? 2 : 1; }

Step stepOf(double size, int range)
{
    int exponent = int(std::ceil(range - std::log2(size)));
    double mantissa = (std::ldexp(size, exponent - range) - 1) * 2048;
    if (exponent > kMaxExponent || exponent < 0) return {exponent < 0 ? 0 : kMaxExponent, 0};
    return {exponent, std::min(2047, int(std::lround(mantissa)))};
}

Quantization quantizationFor(const Coding& coding, const Rect& tile, int precision, bool transformsComponents,
                             double step)
{
    using enum BandKind;
    Quantization quantization;
    quantization.kind = coding.isReversible ? Quantizer::none : Quantizer::expounded;
    quantization.guardBits = kGuardBits + (coding.isReversible && transformsComponents);
    auto add = [&](int level, BandKind kind) {
        int range = precision + gainBits(kind);
        double size = step / std::sqrt(bandEnergy(coding.isReversible, tile.width(), tile.height(), level, kind));
        quantization.steps.push_back(coding.isReversible ? Step{range, 0} : stepOf(size, range));
    };
    add(coding.levels, ll);
    for (int level = coding.levels; level > 0; --level)
        for (BandKind kind : {hl, lh, hh}) add(level, kind);
    return quantization;
}

}

Termination terminationFor(const EncodeOptions& options)
{
    bool isPredictable = options.style & style::kPredictableTermination;
    return isPredictable ? Termination::predictable : options.termination;
}

Size sizeFor(const PictureForm& picture, const EncodeOptions& options)
{
    Size size;
    size.picture = {0, 0, uint32_t(picture.width()), uint32_t(picture.height())};
    size.firstTile = size.picture;
    if (options.tile) std::tie(size.firstTile.x1, size.firstTile.y1) = *options.tile;
    require(!size.firstTile.isEmpty(), "tiles without samples");
    uint64_t tiles = uint64_t(size.tilesAcross()) * size.tilesDown();
    require(tiles <= kMaxTiles, std::to_string(tiles) + " tiles: there can be 65535");
    size.components.resize(size_t(picture.channels()));
    for (Component& component : size.components) {
        component.precision = picture.precision();
        component.isSigned = picture.isSigned();
    }
    return size;
}

Parameters parametersFor(const PictureForm& picture, const EncodeOptions& options, double step)
{
    require(options.layers >= 1 && options.layers <= kMostLayers,
            std::to_string(options.layers) + " layers: there can be 1 to " + std::to_string(kMostLayers));
    Parameters parameters;
    parameters.style = TileStyle{
        .order = options.order, .layers = options.layers, .transformsComponents = picture.space() == ColourSpace::rgb};
    parameters.coding = codingFor(picture, options);
    parameters.quantization = quantizationFor(*parameters.coding, sizeFor(picture, options).tile(0),
                                              picture.precision(), parameters.style->transformsComponents, step);
    return parameters;
}

double stepSize(const Quantization& quantization, const Step& step, BandKind kind, int precision)
{
    if (quantization.kind == Quantizer::none) return 1;
    return std::ldexp(1 + step.mantissa / 2048.0, precision + gainBits(kind) - step.exponent);
}

}
