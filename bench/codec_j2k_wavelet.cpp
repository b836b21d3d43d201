// SPDX-License-Identifier: Apache-2.0
// The sample codec's wavelet transform, five levels of a tile-component, beside as many of OpenJPEG's. The unit is a
// sample of the tile. Both transform a constant picture; making it is taken off.
#include "codec/j2k/wavelet.h"

#include "cases.h"
#include "contest.h"
#include "openjpeg_peer.h"

namespace qel::bench {
namespace {

constexpr int kLevels = 5;

template <class T> Contest transform(bool inverse, int width, int height)
{
    const codec::j2k::Rect rect = {0, 0, uint32_t(width), uint32_t(height)};
    constexpr auto kZero = codec::j2k::Plane<T>::Fill::zero;
    auto samples = [=] { return codec::j2k::Plane<T>(rect.width(), rect.height(), kZero); };
    auto bands = [=] { return codec::j2k::Subbands<T>(rect, kLevels, kZero); };
    Contestant library = {kLibrary, [=] { codec::j2k::forwardWavelet(samples(), rect, kLevels, 1); }, samples};
    if (inverse) library = {kLibrary, [=] { codec::j2k::inverseWavelet(bands(), 1); }, bands};
    OpenJpegCoding coding = {.irreversible = std::is_same_v<T, float>}, without = coding;
    coding.resolutions = kLevels + 1;
    return {"sample", double(width) * height, {library, openJpegDifference(width, height, coding, without, inverse)}};
}

template <class T> void addFilter(const std::string& filter)
{
    for (auto [width, height] : {std::pair(512, 512), std::pair(3840, 2160)})
        for (bool inverse : {false, true})
            addCase("codec/j2k_wavelet/" + filter + (inverse ? " inverse/" : " forward/") + std::to_string(width) +
                        "x" + std::to_string(height),
                    [=, w = width, h = height] { return transform<T>(inverse, w, h); });
}

}

void addJ2kWaveletCases()
{
    addFilter<int32_t>("53");
    addFilter<float>("97");
}

}
