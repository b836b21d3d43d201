// SPDX-License-Identifier: Apache-2.0
// Component transforms of JPEG 2000: in place beside OpenJPEG, and between interleaved pixels and planes.
#include "jpeg2k/transform/component_transform.h"

#include <string.h>

#include <type_traits>

#include "cases.h"
#include "openjpeg_peer.h"
#include "operations.h"
#include "qeljx/jpeg2k_transform.h"
#include "traffic.h"

namespace qel::bench {
namespace {

template <class T> constexpr Layout kPlanes = {3, 1, 4, std::is_same_v<T, float>};
template <class T> constexpr Layout kPixels = {1, 3, 4, std::is_same_v<T, float>};

template <class T> struct Stage {
    const char* name;
    ComponentTransform<T> ComponentTransformKernels::*kernels;
    QelStatus (*inPlace[2])(T* const*, int, QelSize); // forward, inverse
    QelStatus (*toPlanes)(const T*, int, T* const*, int, QelSize);
    QelStatus (*toPixels)(const T* const*, int, T*, int, QelSize);
};

// Transforming what was transformed before, floats would soon be infinite or next to nothing: they stay zeros.
template <class T> std::shared_ptr<Planes> quietPlanes(const WorkingSet& set)
{
    auto planes = std::make_shared<Planes>(kPlanes<T>, set.width, set.height, set.powerOfTwo);
    for (int p = 0; p < 3; ++p) memset((*planes)[p], 0, size_t(planes->step()) * size_t(set.height));
    return planes;
}

template <class T> Contest inPlace(const Stage<T>& stage, bool inverse, const WorkingSet& set)
{
    auto planes = quietPlanes<T>(set);
    QelSize roi = {set.width, set.height};
    Contest contest = {"pixel", double(set.width) * set.height, {}};
    auto function = stage.inPlace[inverse];
    contest.contestants.push_back(
        {kLibrary, [=] { succeed(function((T* const*)planes->pointers(), planes->step(), roi)); }});
    forBuilds<ComponentTransformKernels>([&](auto name, auto& build) {
        auto row = inverse ? (build.*stage.kernels).inverseInPlace : (build.*stage.kernels).forwardInPlace;
        auto run = [=] {
            auto at = [&](int p, int r) { return (T*)rowAt((*planes)[p], planes->step(), r); };
            for (int r = 0; r < roi.height; ++r) row(at(0, r), at(1, r), at(2, r), roi.width);
        };
        contest.contestants.push_back({name, run});
    });
    OpenJpegCoding coding = {.irreversible = std::is_same_v<T, float>, .components = 3}, without = coding;
    coding.componentTransform = true;
    contest.contestants.push_back(openJpegDifference(set.width, set.height, coding, without, inverse));
    addTrafficInPlace(contest, contest.units, kPlanes<T>.bytesPerPixel());
    return contest;
}

template <class T> void addStage(const Stage<T>& stage)
{
    std::string name = stage.name;
    for (bool inverse : {false, true})
        for (auto& set : workingSets(kPlanes<T>.bytesPerPixel()))
            addCase("components/" + name + (inverse ? " in place inverse/" : " in place forward/") + set.name,
                    [=] { return inPlace(stage, inverse, set); });
    addOperation("components", {name + " C3P3", kPixels<T>, kPlanes<T>, call(stage.toPlanes)});
    addOperation("components", {name + " P3C3", kPlanes<T>, kPixels<T>, call(stage.toPixels)});
}

}

void addComponentTransformCases()
{
    using Kernels = ComponentTransformKernels;
    addStage(Stage<int32_t>{"RCT",
                            &Kernels::reversible,
                            {qeliRCTFwd_JPEG2K_32s_P3IR, qeliRCTInv_JPEG2K_32s_P3IR},
                            qeliRCTFwd_JPEG2K_32s_C3P3R,
                            qeliRCTInv_JPEG2K_32s_P3C3R});
    addStage(Stage<float>{"ICT",
                          &Kernels::irreversible,
                          {qeliICTFwd_JPEG2K_32f_P3IR, qeliICTInv_JPEG2K_32f_P3IR},
                          qeliICTFwd_JPEG2K_32f_C3P3R,
                          qeliICTInv_JPEG2K_32f_P3C3R});
}

}
