// Functions over whole pictures, whatever their argument types: how their pixels lie, and a call with plain bytes.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "buffers.h"
#include "contest.h"

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

struct Operation {
    std::string name;
    Layout src, dst;
    Work work;
    std::vector<Peer> peers = {};
    // Rows of the kernel builds, by name of the build; adds what the processor can run.
    std::function<void(const std::function<void(std::string, Work)>& add)> builds = nullptr;
};

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

}
