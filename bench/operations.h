// SPDX-License-Identifier: Apache-2.0
// Functions over whole pictures, whatever their argument types: how their pixels lie, and a call with plain bytes.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "buffers.h"
#include "contest.h"
#include "core/kernel_tables.h"
#include "core/rows.h"

namespace qel::bench {

// Source and destination of one call; both have `roi` pixels.
struct Pictures {
    std::shared_ptr<Planes> src, dst;
    QelSize roi;
};

using Work = std::function<void(const Pictures&)>;

struct Peer {
    std::string name;
    Work work;
    // Largest difference between the peer's samples and the library's; below zero, the results are not comparable.
    int tolerance = -1;
};

// Hands the same work, done by the row kernel of each build that the processor can run, to `add`.
using Builds = std::function<void(int srcPlanes, const std::function<void(std::string, Work)>& add)>;

struct Operation {
    std::string name;
    Layout src, dst;
    Work work;
    Builds builds = nullptr;
    std::vector<Peer> peers = {};
};

// A kernel takes the rows of the source's planes, those of the destination's, and the width.
template <class... P> Work rows(void (*kernel)(P...), int srcPlanes)
{
    return [=](const Pictures& p) {
        auto row = [&](int plane, int y) {
            bool fromSrc = plane < srcPlanes;
            auto& planes = fromSrc ? *p.src : *p.dst;
            return rowAt(planes[fromSrc ? plane : plane - srcPlanes], planes.step(), y);
        };
        auto call = [&]<size_t... I>(int y, std::index_sequence<I...>)
        {
            kernel((std::tuple_element_t<I, std::tuple<P...>>)row(int(I), y)..., p.roi.width);
        };
        for (int y = 0; y < p.roi.height; ++y) call(y, std::make_index_sequence<sizeof...(P) - 1>());
    };
}

// Streaming kernels are measured through the functions that choose them.
template <class Row> auto cachedOf(Streamable<Row> kernel) { return kernel.cached; }
template <class Row> auto cachedOf(Row* kernel) { return kernel; }

// The builds of one member of a table of kernels.
template <class Table, class Kernel> Builds buildsOf(Kernel Table::*kernel)
{
    return [=](int srcPlanes, auto& add) {
        forBuilds<Table>([&](auto name, auto& build) { add(name, rows(cachedOf(build.*kernel), srcPlanes)); });
    };
}

// Calls of the public functions: planes or interleaved pixels on either side.
template <class S, class D> Work call(QelStatus (*f)(const S*, int, D*, int, QelSize))
{
    return [f](const Pictures& p) {
        succeed(f((const S*)(*p.src)[0], p.src->step(), (D*)(*p.dst)[0], p.dst->step(), p.roi));
    };
}
template <class S, class D> Work call(QelStatus (*f)(const S* const*, int, D*, int, QelSize))
{
    return [f](const Pictures& p) {
        succeed(f((const S* const*)p.src->pointers(), p.src->step(), (D*)(*p.dst)[0], p.dst->step(), p.roi));
    };
}
template <class S, class D> Work call(QelStatus (*f)(const S*, int, D* const*, int, QelSize))
{
    return [f](const Pictures& p) {
        succeed(f((const S*)(*p.src)[0], p.src->step(), (D* const*)p.dst->pointers(), p.dst->step(), p.roi));
    };
}
template <class S, class D> Work call(QelStatus (*f)(const S* const*, int, D* const*, int, QelSize))
{
    return [f](const Pictures& p) {
        auto src = (const S* const*)p.src->pointers();
        succeed(f(src, p.src->step(), (D* const*)p.dst->pointers(), p.dst->step(), p.roi));
    };
}

// One case for each working set: the library, its builds, the operation's peers, and the traffic limit.
void addOperation(const std::string& family, const Operation& operation);

// One case in cache and one beyond: the library with two threads against itself with one.
void addThreads(const std::string& family, const Operation& operation);

// The conversions of colour that use several threads.
std::vector<Operation> parallelColour();

}
