// SPDX-License-Identifier: Apache-2.0
// Wavelets of tiles, one level and five in place beside as many of OpenJPEG's, and one level to subbands. The unit is a
// sample of the tile.
#include "jpeg2k/transform/wavelet53.h"
#include "jpeg2k/transform/wavelet97.h"

#include "buffers.h"
#include "cases.h"
#include "contest.h"
#include "jpeg2k/transform/wavelet_tiles.h"
#include "openjpeg_peer.h"
#include "qeljx/jpeg2k_transform.h"
#include "traffic.h"

namespace qel::bench {
namespace {

// A tile with its work buffer.
template <class T> struct Tile {
    int width, height;
    std::shared_ptr<Memory> samples, bands, buffer;

    Tile(int w, int h) : width(w), height(h), samples(make(w, h)), bands(make(w, h)), buffer(make(w + 64, h + 2))
    {
        // Noise of 12 bits: sums of 16-bit lanes do not wrap, floats stay in range.
        T* sample = (T*)samples->data();
        for (size_t i = 0; i < size_t(w) * size_t(h); ++i) sample[i] = T(int(sample[i] & 0xFFF) - 2048);
    }
    static std::shared_ptr<Memory> make(int w, int h)
    {
        return std::make_shared<Memory>(sizeof(T) * size_t(w) * size_t(h));
    }
    int step() const { return width * int(sizeof(T)); }
};

// transform(data, step, rectangle, buffer) for each level; `inverse` begins with the smallest.
template <class T, class Transform> void eachLevel(const Tile<T>& tile, int levels, bool inverse, Transform transform)
{
    for (int i = 0; i < levels; ++i) {
        int level = inverse ? levels - 1 - i : i;
        auto shrunk = [=](int length) { return (length + (1 << level) - 1) >> level; };
        QelRect rect = {0, 0, shrunk(tile.width), shrunk(tile.height)};
        transform((T*)tile.samples->data(), tile.step(), &rect, tile.buffer->data());
    }
}

template <class T> using InPlace = QelStatus (*)(T*, int, const QelRect*, uint8_t*);
template <class T> using ToBands = QelStatus (*)(const T*, int, const QelRect*, T* const*, const int*, uint8_t*);
template <class T> using FromBands = QelStatus (*)(const T* const*, const int*, const QelRect*, T*, int, uint8_t*);

template <class Table, class T> struct Stage {
    const char* name;
    LiftingKernels<T> Table::*kernels;
    bool irreversible;
    InPlace<T> forward, inverse;
    ToBands<T> toBands;
    FromBands<T> fromBands;
};

template <class Table, class T>
Contest inPlace(const Stage<Table, T>& stage, int levels, bool inverse, int width, int height)
{
    Tile<T> tile(width, height);
    Contest contest = {"sample", double(width) * height, {}};
    auto function = inverse ? stage.inverse : stage.forward;
    auto add = [&](std::string name, auto transform) {
        contest.contestants.push_back({name, [=] { eachLevel(tile, levels, inverse, transform); }});
    };
    add(kLibrary, [=](auto... args) { succeed(function(args...)); });
    forBuilds<Table>([&](auto name, auto& build) {
        auto& kernels = build.*stage.kernels;
        add(name, [&kernels, inverse](T* data, int step, const QelRect* rect, uint8_t* buffer) {
            (inverse ? inverseInPlace<T> : forwardInPlace<T>)(kernels, data, step, *rect, buffer);
        });
    });
    OpenJpegCoding coding = {.irreversible = stage.irreversible}, without = coding;
    coding.resolutions = levels + 1;
    contest.contestants.push_back(openJpegDifference(width, height, coding, without, inverse));
    return contest;
}

template <class Table, class T> Contest bands(const Stage<Table, T>& stage, bool inverse, int width, int height)
{
    Tile<T> tile(width, height);
    Contest contest = {"sample", double(width) * height, {}};
    contest.contestants.push_back(
        {kLibrary, [=] {
             T* start = (T*)tile.bands->data();
             ptrdiff_t right = (width + 1) / 2, lower = ptrdiff_t(width) * ((height + 1) / 2);
             T* planes[] = {start, start + lower, start + right, start + lower + right};
             int steps[] = {tile.step(), tile.step(), tile.step(), tile.step()};
             QelRect rect = {0, 0, width, height};
             T* samples = (T*)tile.samples->data();
             succeed(inverse ? stage.fromBands(planes, steps, &rect, samples, tile.step(), tile.buffer->data())
                             : stage.toBands(samples, tile.step(), &rect, planes, steps, tile.buffer->data()));
         }});
    addTraffic(contest, contest.units, sizeof(T), sizeof(T));
    return contest;
}

template <class Table, class T> void addStage(const Stage<Table, T>& stage)
{
    const struct {
        const char* name;
        int width, height;
    } sizes[] = {{"64x64", 64, 64}, {"512x512", 512, 512}, {"2048x2048", 2048, 2048}, {"3840x2160", 3840, 2160}};
    for (auto& size : sizes)
        for (bool inverse : {false, true}) {
            auto name = [&](const char* form) {
                return std::string("wavelet/") + stage.name + (inverse ? " inverse" : " forward") + form + "/" +
                       size.name;
            };
            addCase(name(""), [=] { return inPlace(stage, 5, inverse, size.width, size.height); });
            addCase(name(" one level"), [=] { return inPlace(stage, 1, inverse, size.width, size.height); });
            addCase(name(" bands"), [=] { return bands(stage, inverse, size.width, size.height); });
        }
}

}

void addWaveletCases()
{
    using W53 = Wavelet53Kernels;
    using W97 = Wavelet97Kernels;
    addStage(Stage<W53, int16_t>{"53 16s", &W53::of16s, false, qeliWTFwd_B53_JPEG2K_16s_C1IR,
                                 qeliWTInv_B53_JPEG2K_16s_C1IR, qeliWTFwd_B53_JPEG2K_16s_C1R,
                                 qeliWTInv_B53_JPEG2K_16s_C1R});
    addStage(Stage<W53, int32_t>{"53 32s", &W53::of32s, false, qeliWTFwd_B53_JPEG2K_32s_C1IR,
                                 qeliWTInv_B53_JPEG2K_32s_C1IR, qeliWTFwd_B53_JPEG2K_32s_C1R,
                                 qeliWTInv_B53_JPEG2K_32s_C1R});
    addStage(Stage<W97, int16_t>{"97 16s", &W97::of16s, true, qeliWTFwd_D97_JPEG2K_16s_C1IR,
                                 qeliWTInv_D97_JPEG2K_16s_C1IR, qeliWTFwd_D97_JPEG2K_16s_C1R,
                                 qeliWTInv_D97_JPEG2K_16s_C1R});
    addStage(Stage<W97, int32_t>{"97 32s", &W97::of32s, true, qeliWTFwd_D97_JPEG2K_32s_C1IR,
                                 qeliWTInv_D97_JPEG2K_32s_C1IR, qeliWTFwd_D97_JPEG2K_32s_C1R,
                                 qeliWTInv_D97_JPEG2K_32s_C1R});
}

}
