// SPDX-License-Identifier: Apache-2.0
#include "operations.h"

#include <stdlib.h>

#include <algorithm>

#include "traffic.h"

namespace qel::bench {
namespace {

Pictures picturesFor(const Operation& operation, const WorkingSet& set)
{
    auto planes = [&](Layout layout) {
        return std::make_shared<Planes>(layout, set.width, set.height, set.powerOfTwo);
    };
    return {planes(operation.src), planes(operation.dst), {set.width, set.height}};
}

// The destination's bytes, row after row.
std::vector<uint8_t> resultOf(const Work& work, const Pictures& p, Layout layout)
{
    work(p);
    std::vector<uint8_t> bytes;
    for (int plane = 0; plane < layout.planes; ++plane)
        for (int y = 0; y < p.roi.height; ++y) {
            const uint8_t* row = (*p.dst)[plane] + ptrdiff_t(p.dst->step()) * y;
            bytes.insert(bytes.end(), row, row + p.roi.width * layout.channels * layout.bytes);
        }
    return bytes;
}

void compare(const Operation& operation, const Pictures& p)
{
    auto ours = resultOf(operation.work, p, operation.dst);
    for (auto& peer : operation.peers) {
        if (peer.tolerance < 0) continue;
        auto theirs = resultOf(peer.work, p, operation.dst);
        for (size_t i = 0; i < ours.size(); ++i)
            require(abs(ours[i] - theirs[i]) <= peer.tolerance, "the peer's result is not the library's");
    }
}

Contest contestOf(const Operation& operation, const WorkingSet& set)
{
    Pictures p = picturesFor(operation, set);
    Contest contest = {"pixel", double(set.width) * set.height, {}};
    auto add = [&](std::string name, Work work) { contest.contestants.push_back({name, [=] { work(p); }}); };
    add(kLibrary, operation.work);
    if (operation.builds) operation.builds(operation.src.planes, add);
    for (auto& peer : operation.peers) add(peer.name, peer.work);
    addTraffic(contest, contest.units, operation.src.bytesPerPixel(), operation.dst.bytesPerPixel());
    contest.check = [=] { compare(operation, p); };
    return contest;
}

Contest threadsOf(const Operation& operation, const WorkingSet& set)
{
    Pictures p = picturesFor(operation, set);
    return oneAgainstTwo("pixel", double(set.width) * set.height, [=] { operation.work(p); });
}

}

void addOperation(const std::string& family, const Operation& operation)
{
    for (auto& set : workingSets(operation.src.bytesPerPixel() + operation.dst.bytesPerPixel()))
        addCase(family + "/" + operation.name + "/" + set.name, [=] { return contestOf(operation, set); });
}

void addThreads(const std::string& family, const Operation& operation)
{
    for (auto& set : workingSets(operation.src.bytesPerPixel() + operation.dst.bytesPerPixel()))
        if (isForThreads(set))
            addCase("threads/" + family + "/" + operation.name + "/" + set.name,
                    [=] { return threadsOf(operation, set); });
}

}
