// SPDX-License-Identifier: Apache-2.0
// Components by themselves up to the wavelet; then the component transform, level shift and clamping (T.800 Annex G) in
// strips of rows.
#include "codec/j2k/decode/tile_decoder.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <variant>

#include "codec/base/library.h"
#include "codec/base/parallel.h"
#include "codec/j2k/decode/block_decoder.h"
#include "codec/j2k/decode/packet_reader.h"

namespace qel::codec::j2k {

namespace {

constexpr int kRowsInStrip = 16;

using IntPlane = Plane<int32_t>;
using FloatPlane = Plane<float>;
using AnyPlane = std::variant<IntPlane, FloatPlane>;

uint32_t widthOf(const AnyPlane& plane)
{
    return std::visit([](auto& p) { return p.width(); }, plane);
}
uint32_t heightOf(const AnyPlane& plane)
{
    return std::visit([](auto& p) { return p.height(); }, plane);
}

// Samples of either sign, before unsigned ones are shifted up.
int32_t halfRange(const Samples& samples) { return int32_t(uint32_t(1) << (samples.precision - 1)); }
int32_t levelShift(const Samples& samples) { return samples.isSigned ? 0 : halfRange(samples); }

// Clamping to the range of the samples, and the level shift.
void storeRow(const int32_t* src, uint32_t width, const Samples& samples, int32_t* out)
{
    const int32_t half = halfRange(samples), shift = levelShift(samples);
    for (uint32_t x = 0; x < width; ++x) out[x] = std::clamp(src[x], -half, half - 1) + shift;
}

// The same to nearest, in a form that compilers vectorise: clamped before it is an integer, also where it is no number.
void storeRow(const float* src, uint32_t width, const Samples& samples, int32_t* out)
{
    const int32_t half = halfRange(samples), shift = levelShift(samples);
    const float low = -float(half), high = std::min(float(half - 1), std::nextafter(float(half), 0.f));
    for (uint32_t x = 0; x < width; ++x) {
        float v = src[x];
        v = v > low ? v : low;
        v = v < high ? v : high;
        out[x] = int32_t(v + (v < 0 ? -0.5f : 0.5f)) + shift;
    }
}

template <class T> void undoTransform(T* const planes[3], int step, QelSize size)
{
    if constexpr (std::is_same_v<T, int32_t>)
        check(qeliRCTInv_JPEG2K_32s_P3IR(planes, step, size));
    else
        check(qeliICTInv_JPEG2K_32f_P3IR(planes, step, size));
}

class TileDecoder {
public:
    TileDecoder(const Tile& tile, const Rect& needed, const DecodeOptions& options, int threads,
                std::vector<Samples>& components, const std::function<void(uint64_t)>& done)
        : tile_(tile), needed_(needed), options_(options), threads_(threads), components_(components), done_(done)
    {}

    void decode();
    Warnings warnings;

private:
    void checkLevels(const Coding& coding) const;
    std::vector<AnyPlane> decodeComponents(size_t first, size_t count);
    AnyPlane decodeComponent(size_t c);
    template <class T> Plane<T> decodeComponentAs(size_t c);
    bool areTransformed() const;
    bool areAlike(const std::vector<AnyPlane>& planes);
    void store(size_t first, std::span<AnyPlane> planes, bool areTransformed);
    template <class T> void store(size_t first, std::span<AnyPlane> planes, bool areTransformed);

    const Tile& tile_;
    const Rect needed_; // on the reference grid
    const DecodeOptions& options_;
    int threads_;
    std::vector<Samples>& components_;
    const std::function<void(uint64_t)>& done_;
    BlockFaults faults_;
};

template <class T> Plane<T> TileDecoder::decodeComponentAs(size_t c)
{
    const TileComponent& component = tile_.components[c];
    std::atomic<uint64_t> ofBlocks = 0;
    auto blockDone = [&](uint64_t samples) {
        ofBlocks += samples;
        done_(samples);
    };
    const Samples& samples = components_[c];
    Rect window = resolutionRect(subsampled(needed_, samples.dx, samples.dy), options_.reduce);
    auto plane = inverseWavelet(
        decodeBlocks<T>(component, samples.precision, options_.reduce, window, threads_, faults_, blockDone), threads_);
    // Where nothing is coded there are no code-blocks.
    done_(uint64_t(plane.width()) * plane.height() - ofBlocks);
    return plane;
}

void TileDecoder::checkLevels(const Coding& coding) const
{
    if (options_.reduce > coding.levels)
        throw CodecError(std::to_string(coding.levels) + " resolutions can be left out");
}

AnyPlane TileDecoder::decodeComponent(size_t c)
{
    if (tile_.components[c].coding.isReversible) return decodeComponentAs<int32_t>(c);
    return decodeComponentAs<float>(c);
}

// Those that have samples, beside each other.
std::vector<AnyPlane> TileDecoder::decodeComponents(size_t first, size_t count)
{
    std::vector<size_t> coded;
    for (size_t c = first; c < first + count; ++c) {
        if (components_[c].rect.isEmpty()) continue;
        checkLevels(tile_.components[c].coding);
        coded.push_back(c);
    }
    std::vector<AnyPlane> planes(coded.size());
    forEachInParallel(int(coded.size()), threads_,
                      [&](int i) { planes[size_t(i)] = decodeComponent(coded[size_t(i)]); });
    return planes;
}

bool TileDecoder::areTransformed() const
{
    return tile_.style.transformsComponents && options_.transformComponents && components_.size() >= 3 &&
           std::none_of(components_.begin(), components_.begin() + 3,
                        [](const Samples& samples) { return samples.rect.isEmpty(); });
}

// The transform needs three planes of one size, from the same wavelet.
bool TileDecoder::areAlike(const std::vector<AnyPlane>& planes)
{
    for (const AnyPlane& plane : planes)
        if (plane.index() != planes[0].index() || widthOf(plane) != widthOf(planes[0]) ||
            heightOf(plane) != heightOf(planes[0])) {
            warnings.push_back("the component transform of components that differ is left out");
            return false;
        }
    return true;
}

// `planes` are those of the components from `first` on.
template <class T> void TileDecoder::store(size_t first, std::span<AnyPlane> planes, bool areTransformed)
{
    uint32_t width = widthOf(planes[0]), height = heightOf(planes[0]);
    int strips = int((height + kRowsInStrip - 1) / kRowsInStrip);
    forEachInParallel(strips, threads_, [&](int strip) {
        uint32_t from = uint32_t(strip) * kRowsInStrip, to = std::min(height, from + kRowsInStrip);
        T* start[3] = {};
        for (size_t i = 0; i < planes.size(); ++i) start[i] = std::get<Plane<T>>(planes[i]).row(from);
        int step = std::get<Plane<T>>(planes[0]).step();
        if (areTransformed) undoTransform(start, step, {int(width), int(to - from)});
        for (size_t i = 0; i < planes.size(); ++i) {
            Samples& samples = components_[first + i];
            Rect rect = resolutionRect(tile_.components[first + i].rect, options_.reduce);
            for (uint32_t y = from; y < to; ++y)
                storeRow(std::get<Plane<T>>(planes[i]).row(y), width, samples,
                         samples.plane.row(rect.y0 + y - samples.rect.y0) + (rect.x0 - samples.rect.x0));
        }
    });
}

void TileDecoder::store(size_t first, std::span<AnyPlane> planes, bool areTransformed)
{
    if (widthOf(planes[0]) == 0) return;
    std::holds_alternative<IntPlane>(planes[0]) ? store<int32_t>(first, planes, areTransformed)
                                                : store<float>(first, planes, areTransformed);
}

void TileDecoder::decode()
{
    for (size_t c = 0; c < components_.size();) {
        size_t first = c, count = c == 0 && areTransformed() ? 3 : 1;
        std::vector<AnyPlane> planes = decodeComponents(first, count);
        c += count;
        if (planes.size() == 3 && areAlike(planes))
            store(first, planes, true);
        else
            for (size_t i = 0; i < planes.size(); ++i) store(first + i, std::span(planes).subspan(i, 1), false);
    }
    auto complain = [&](int count, const char* what) {
        if (count) warnings.push_back(std::to_string(count) + what);
    };
    complain(faults_.damaged, " code-blocks are damaged");
    complain(faults_.tooDeep, " code-blocks of more than 31 bits are left out");
}

}

void decodeTile(const Codestream& codestream, uint32_t index, const DecodeOptions& options, int threads,
                std::vector<Samples>& components, Warnings& warnings, const std::function<void(uint64_t)>& done)
{
    Tile tile = readTile(codestream, index, {options.reduce, options.layers});
    warnings.insert(warnings.end(), tile.warnings.begin(), tile.warnings.end());
    TileDecoder decoder(tile, neededRegion(codestream.size(), options), options, threads, components, done);
    decoder.decode();
    for (const std::string& warning : decoder.warnings)
        warnings.push_back("tile " + std::to_string(index) + ": " + warning);
}

}
