// SPDX-License-Identifier: Apache-2.0
// Resampling of planes and rows by two, beside libyuv. The unit is a sample of the larger picture.
#include "jpeg/colour/sampling.h"

#include <algorithm>

#include <libyuv.h>

#include "buffers.h"
#include "cases.h"
#include "contest.h"
#include "core/rows.h"
#include "qeljx/jpeg_sampling.h"
#include "traffic.h"

namespace qel::bench {
namespace {

constexpr Layout kSamples = {1, 1, 1};

struct Halves {
    std::shared_ptr<Planes> large, small;
    QelSize largeSize, smallSize;
};

using PlaneFunction = QelStatus (*)(const uint8_t*, int, QelSize, uint8_t*, int, QelSize);
using Work = std::function<void(const Halves&)>;
// One row of the destination from one row of the source, or the two that matter for it.
using Row = std::function<void(const uint8_t* src1, const uint8_t* src2, uint8_t* dst, int dstWidth)>;

struct Stage {
    const char* name;
    bool up, bothWays; // from small to large; halved in height too
    PlaneFunction plane;
    Row row;                                 // the function for single rows
    Row (*kernelOf)(const SamplingKernels&); // the kernel of the plane function
};

Work planeWork(const Stage& stage)
{
    return [f = stage.plane, up = stage.up](const Halves& h) {
        auto &large = *h.large, &small = *h.small;
        succeed(up ? f(small[0], small.step(), h.smallSize, large[0], large.step(), h.largeSize)
                   : f(large[0], large.step(), h.largeSize, small[0], small.step(), h.smallSize));
    };
}

uint8_t* row(const Planes& planes, int y) { return rowAt(planes[0], planes.step(), y); }

Work rowWork(const Stage& stage, Row body)
{
    if (!stage.up)
        return [body, parts = stage.bothWays ? 2 : 1](const Halves& h) {
            for (int y = 0; y < h.smallSize.height; ++y) {
                auto first = row(*h.large, parts * y), last = row(*h.large, parts * y + parts - 1);
                body(first, last, row(*h.small, y), h.smallSize.width);
            }
        };
    return [body, parts = stage.bothWays ? 2 : 1](const Halves& h) {
        for (int y = 0; y < h.largeSize.height; ++y) {
            int near = y / parts, far = std::clamp(y % 2 ? near + 1 : near - 1, 0, h.smallSize.height - 1);
            body(row(*h.small, near), row(*h.small, far), row(*h.large, y), h.largeSize.width);
        }
    };
}

// libyuv's box of two samples in a row is its halving of both sides with a linear filter, which looks at the first of
// each two rows: half the distance between rows makes these all rows.
Work yuvWork(const Stage& stage)
{
    auto filter = stage.bothWays ? libyuv::kFilterBox : libyuv::kFilterLinear;
    if (stage.up && stage.bothWays) filter = libyuv::kFilterBilinear;
    bool halfSteps = !stage.up && !stage.bothWays;
    return [=, up = stage.up](const Halves& h) {
        auto &large = *h.large, &small = *h.small;
        auto a = h.largeSize, b = h.smallSize;
        if (up) {
            libyuv::ScalePlane(small[0], small.step(), b.width, b.height, large[0], large.step(), a.width, a.height,
                               filter);
        } else {
            int parts = halfSteps ? 2 : 1;
            libyuv::ScalePlane(large[0], large.step() / parts, a.width, a.height * parts, small[0], small.step(),
                               b.width, b.height, filter);
        }
    };
}

Halves halvesFor(const Stage& stage, const WorkingSet& set)
{
    QelSize small = {set.width / 2, set.height / (stage.bothWays ? 2 : 1)};
    QelSize large = {small.width * 2, stage.bothWays ? small.height * 2 : small.height};
    // The plane functions read one sample beside each source row.
    auto planes = [&](QelSize size) {
        return std::make_shared<Planes>(kSamples, size.width, size.height, set.powerOfTwo, 2);
    };
    return {planes(large), planes(small), large, small};
}

// The destination without its edges, which belong to the filter alone.
std::vector<uint8_t> resultOf(const Stage& stage, const Work& work, const Halves& h)
{
    auto& dst = stage.up ? *h.large : *h.small;
    QelSize size = stage.up ? h.largeSize : h.smallSize;
    work(h);
    std::vector<uint8_t> bytes;
    for (int y = 1; y < size.height - 1; ++y) bytes.insert(bytes.end(), row(dst, y) + 1, row(dst, y) + size.width - 1);
    return bytes;
}

// Library and peer agree within one: they round differently.
void compare(const Stage& stage, const Work& ours, const Work& theirs, const Halves& h)
{
    auto first = resultOf(stage, ours, h), second = resultOf(stage, theirs, h);
    for (size_t i = 0; i < first.size(); ++i)
        require(abs(first[i] - second[i]) <= 1, "the peer's result is not the library's");
}

Contest contestOf(const Stage& stage, const Work& ours, bool withBuilds, const WorkingSet& set)
{
    Halves h = halvesFor(stage, set);
    Work theirs = yuvWork(stage);
    Contest contest = {"sample", double(h.largeSize.width) * h.largeSize.height, {}};
    auto add = [&](std::string name, Work work) { contest.contestants.push_back({name, [=] { work(h); }}); };
    add(kLibrary, ours);
    if (withBuilds)
        forBuilds<SamplingKernels>(
            [&](std::string name, auto& build) { add(name, rowWork(stage, stage.kernelOf(build))); });
    add("libyuv", theirs);
    int ratio = stage.bothWays ? 4 : 2;
    addTraffic(contest, contest.units / ratio, stage.up ? 1 : ratio, stage.up ? ratio : 1);
    contest.check = [=] { compare(stage, ours, theirs, h); };
    return contest;
}

Contest threadsOf(const Stage& stage, const WorkingSet& set)
{
    Halves h = halvesFor(stage, set);
    return oneAgainstTwo("sample", double(h.largeSize.width) * h.largeSize.height,
                         [=, work = planeWork(stage)] { work(h); });
}

const Stage kStages[] = {
    {"DownH2V1", false, false, qeliSampleDownH2V1_JPEG_8u_C1R,
     [](auto src, auto, auto dst, int w) { succeed(qeliSampleDownRowH2V1_Box_JPEG_8u_C1(src, 2 * w, dst)); },
     [](auto& build) -> Row { return [f = build.downH2V1](auto src, auto, auto dst, int w) { f(src, dst, w); }; }},
    {"DownH2V2", false, true, qeliSampleDownH2V2_JPEG_8u_C1R,
     [](auto a, auto b, auto dst, int w) { succeed(qeliSampleDownRowH2V2_Box_JPEG_8u_C1(a, b, 2 * w, dst)); },
     [](auto& build) -> Row { return build.downH2V2; }},
    {"UpH2V1", true, false, qeliSampleUpH2V1_JPEG_8u_C1R,
     [](auto src, auto, auto dst, int w) { succeed(qeliSampleUpRowH2V1_Triangle_JPEG_8u_C1(src, w / 2, dst)); },
     [](auto& build) -> Row { return [f = build.upH2V1](auto src, auto, auto dst, int w) { f(src, dst, w); }; }},
    {"UpH2V2", true, true, qeliSampleUpH2V2_JPEG_8u_C1R,
     [](auto a, auto b, auto dst, int w) { succeed(qeliSampleUpRowH2V2_Triangle_JPEG_8u_C1(a, b, w / 2, dst)); },
     [](auto& build) -> Row { return build.upH2V2; }},
};

}

void addSamplingCases()
{
    for (auto& stage : kStages)
        for (auto& set : workingSets(2)) {
            auto size = std::string(stage.name) + "/" + set.name;
            addCase("sampling/" + size, [=] { return contestOf(stage, planeWork(stage), true, set); });
            addCase("sampling/rows " + size, [=] { return contestOf(stage, rowWork(stage, stage.row), false, set); });
            if (stage.bothWays && isForThreads(set))
                addCase("threads/sampling/" + size, [=] { return threadsOf(stage, set); });
        }
}

}
