// SPDX-License-Identifier: Apache-2.0
#include "contest.h"

#include <omp.h>
#include <time.h>

#include <algorithm>
#include <utility>

#include <benchmark/benchmark.h>

#include "codec/base/parallel.h"
#include "mispredictions.h"

namespace qel::bench {
namespace {

struct Case {
    std::string name;
    std::function<Contest()> make;
};

std::vector<Case>& cases()
{
    static std::vector<Case> all;
    return all;
}

double now(Clock clock)
{
    timespec t;
    clock_gettime(clock == Clock::thread ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

// Seconds that one of `repeats` runs takes.
double timeOf(const std::function<void()>& run, int repeats, Clock clock)
{
    double start = now(clock);
    for (int i = 0; i < repeats; ++i) run();
    return (now(clock) - start) / repeats;
}

// How many runs fill a turn; this also warms up.
int repeatsFor(const std::function<void()>& run, double turn, Clock clock)
{
    for (int repeats = 1;; repeats *= 2) {
        double total = timeOf(run, repeats, clock) * repeats;
        if (total >= turn / 4) return std::max(1, int(repeats * turn / total + 0.5));
    }
}

// Cycles in a nanosecond, from a chain of additions of one cycle each. The addend is a register: some processors
// resolve additions of constants without executing them.
double clockRate()
{
    constexpr int kAdditions = 1 << 20;
    unsigned long sum = 0, one = 1;
    benchmark::DoNotOptimize(one);
    double start = now(Clock::thread);
    for (int i = 0; i < kAdditions / 16; ++i) {
#pragma GCC unroll 16
        for (int k = 0; k < 16; ++k) {
            sum += one;
            asm volatile("" : "+r"(sum));
        }
    }
    return kAdditions / (now(Clock::thread) - start) * 1e-9;
}

struct Quartiles {
    double low, median, high;
};

Quartiles quartilesOf(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    auto at = [&](double part) {
        double place = part * double(v.size() - 1);
        size_t i = size_t(place), next = std::min(i + 1, v.size() - 1);
        return v[i] + (place - double(i)) * (v[next] - v[i]);
    };
    return {at(0.25), at(0.5), at(0.75)};
}

// A contestant with the number of runs in a turn, and what its turns have shown: seconds a run.
struct Entry {
    Contestant who;
    int repeats = 0;
    std::vector<double> seconds = {};

    Entry(Contestant contestant, double turn, Clock clock) : who(std::move(contestant))
    {
        repeats = repeatsFor(who.run, turn, clock);
        if (who.rest) who.rest();
    }
    void takeTurn(Clock clock) { seconds.push_back(who.rest ? difference(clock) : timeOf(who.run, repeats, clock)); }

private:
    // A difference of two long times would be at the mercy of what happens between them: they alternate run by run.
    double difference(Clock clock) const
    {
        double sum = 0;
        for (int i = 0; i < repeats; ++i) sum += timeOf(who.run, 1, clock) - timeOf(who.rest, 1, clock);
        return sum / repeats;
    }
};

void report(benchmark::State& state, const Contest& contest, const std::vector<Entry>& entries)
{
    auto& library = entries.front().seconds;
    for (auto& entry : entries) {
        auto& name = entry.who.name;
        state.counters["ns:" + name] = quartilesOf(entry.seconds).median / contest.units * 1e9;
        if (contest.countsMispredictions)
            if (auto count = mispredictionsOf(entry.who.run)) state.counters["misses:" + name] = *count / contest.units;
        if (&entry == &entries.front()) continue;
        std::vector<double> ratios;
        for (size_t i = 0; i < library.size(); ++i) ratios.push_back(entry.seconds[i] / library[i]);
        auto ratio = quartilesOf(ratios);
        state.counters["ratio:" + name] = ratio.median;
        state.counters["low:" + name] = ratio.low;
        state.counters["high:" + name] = ratio.high;
    }
    for (auto& [name, value] : contest.facts) state.counters[name] = value;
    state.SetLabel(contest.unit);
}

void measure(benchmark::State& state, const Contest& contest, double turn)
{
    if (contest.check) contest.check();
    std::vector<Entry> entries;
    for (auto& contestant : contest.contestants) entries.emplace_back(contestant, turn, contest.clock);
    std::vector<double> rates;
    size_t begin = 0;
    for (auto _ : state) {
        rates.push_back(clockRate());
        // Each round begins with another contestant, so that nobody always follows the same one.
        for (size_t i = 0; i < entries.size(); ++i) entries[(begin + i) % entries.size()].takeTurn(contest.clock);
        ++begin;
        state.SetIterationTime(entries.front().seconds.back());
    }
    report(state, contest, entries);
    state.counters["GHz"] = quartilesOf(rates).median;
}

}

void addCase(const std::string& name, std::function<Contest()> make) { cases().push_back({name, std::move(make)}); }

void registerCases(int rounds, double turn)
{
    // Cases with threads of their own come last: some of these wait for work a while, at full speed.
    std::stable_partition(cases().begin(), cases().end(),
                          [](const Case& one) { return !one.name.starts_with("threads/"); });
    for (auto& one : cases()) {
        auto run = [&one, turn](benchmark::State& state) {
            try {
                measure(state, one.make(), turn);
            } catch (const std::exception& e) {
                state.SkipWithError(e.what());
            }
        };
        benchmark::RegisterBenchmark(one.name.c_str(), run)
            ->Iterations(rounds)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
}

std::function<void()> onThreads(int threads, std::function<void()> work)
{
    return [=] {
        omp_set_num_threads(threads);
        codec::ThreadLimit limit(threads);
        work();
        omp_set_num_threads(1);
    };
}

Contest oneAgainstTwo(const std::string& unit, double units, std::function<void()> work)
{
    return {unit, units, {{kLibrary, onThreads(2, work)}, {"one thread", onThreads(1, work)}}, Clock::wall};
}

bool canRun([[maybe_unused]] const std::string& build)
{
#if QEL_X86
    if (build == "avx2") return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
    if (build == "avx512") return __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("avx512vl");
#endif
    return build == "baseline";
}

}
