// SPDX-License-Identifier: Apache-2.0
// A stage and those who compete in it: the library, its kernels per instruction set, peers, and the machine itself.
// They take turns of some 20 ms, round after round, on the same data; what is reported is the median over the rounds of
// the ratio within a round. A ratio of neighbours in time stays true when the clock or the load of the machine drifts,
// which the ratio of two means taken minutes apart does not.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "qeljx/types.h"

namespace qel::bench {

struct Contestant {
    std::string name;
    std::function<void()> run;
    // For a stage that a peer offers only as part of something larger: the rest, whose time is taken off.
    std::function<void()> rest = nullptr;
};

// Time of the calling thread where one thread works; time of day where several do.
enum class Clock { thread, wall };

struct Contest {
    std::string unit;                    // "pixel", "sample", "block", "symbol"
    double units = 0;                    // in one run
    std::vector<Contestant> contestants; // the library first; ratios are the others' time by its time
    Clock clock = Clock::thread;
    std::function<void()> check = nullptr; // throws unless library and peers did the same work
    // What else there is to report, such as "psnr:qeljx".
    std::vector<std::pair<std::string, double>> facts = {};
    bool countsMispredictions = false; // of branches, where the machine can
};

// `work`, in which the library and the codec have so many threads.
std::function<void()> onThreads(int threads, std::function<void()> work);
// The library with two threads against itself with one.
Contest oneAgainstTwo(const std::string& unit, double units, std::function<void()> work);

// What the first contestant is called.
inline const char* const kLibrary = "qeljx";

// Adds a case, "family/stage/size" or longer. `make` allocates the data when the case's turn comes.
void addCase(const std::string& name, std::function<Contest()> make);

// Hands all cases to Google Benchmark, each with so many rounds of turns that last `turn` seconds or one run.
void registerCases(int rounds, double turn);

// Calls into the library must succeed, or there is nothing to measure.
inline void succeed(QelStatus status)
{
    if (status < 0) throw std::runtime_error("the library returned " + std::to_string(status));
}

// The same for peers: `good` is what their convention calls success.
inline void require(bool good, const char* what)
{
    if (!good) throw std::runtime_error(what);
}

// Whether this processor runs the kernel build of that name.
bool canRun(const std::string& build);

// body(name, table) for each build of a kernel table that this processor can run, best last.
template <class Table, class Body> void forBuilds(Body body)
{
    body("baseline", Table::baseline);
#if QEL_X86
    if (canRun("avx2")) body("avx2", Table::avx2);
    if constexpr (requires { Table::avx512; })
        if (canRun("avx512")) body("avx512", Table::avx512);
#endif
}

}
