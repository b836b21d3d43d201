// SPDX-License-Identifier: Apache-2.0
// What threads cost where a machine has other work: calls on one thread and on all, beside busy programs.
#include <omp.h>
#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <numeric>
#include <regex>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "cases.h"
#include "codec/base/parallel.h"
#include "codec/base/processors.h"
#include "codec/j2k/decode/reader.h"
#include "codec/j2k/encode/writer.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/encode/writer.h"
#include "operations.h"
#include "qeljx.h"
#include "samples.h"

namespace qel::bench {
namespace {

struct LoadCase {
    std::string name;
    std::function<void()> run;
};

// Programs that do nothing but use a processor each, as long as this lives.
class BusyPrograms {
public:
    explicit BusyPrograms(int count)
    {
        fflush(stdout);
        for (int i = 0; i < count; ++i) {
            pid_t child = fork();
            require(child >= 0, "no further process");
            if (child == 0) work();
            children_.push_back(child);
        }
    }
    BusyPrograms(const BusyPrograms&) = delete;
    BusyPrograms& operator=(const BusyPrograms&) = delete;
    ~BusyPrograms()
    {
        for (pid_t child : children_) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
    }

private:
    [[noreturn]] static void work()
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (unsigned i = 0;; ++i) benchmark::DoNotOptimize(i);
    }

    std::vector<pid_t> children_;
};

// As many as programs get that say nothing of threads.
void onDefaultThreads(const std::function<void()>& work)
{
    omp_set_num_threads(omp_get_num_procs());
    codec::ThreadLimit none(0);
    work();
    omp_set_num_threads(1);
}

double now()
{
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

// Prints what calls take, in turns of one thread and of all.
void measure(const LoadCase& one, int busy, int all)
{
    constexpr double kTurn = 0.25;
    constexpr int kTurns = 3;
    std::vector<double> times[2];
    for (int turn = 0; turn < 2 * kTurns; ++turn) {
        std::vector<double>& mine = times[turn % 2];
        auto work = [&] {
            double last = now(), end = last + kTurn;
            do {
                one.run();
                double next = now();
                mine.push_back(1e6 * (next - last));
                last = next;
            } while (last < end);
        };
        turn % 2 ? onDefaultThreads(work) : onThreads(1, work)();
    }
    double alone = 0;
    for (int i : {0, 1}) {
        std::vector<double>& mine = times[i];
        std::sort(mine.begin(), mine.end());
        double mean = std::accumulate(mine.begin(), mine.end(), 0.0) / double(mine.size());
        auto at = [&](double part) { return mine[size_t(part * double(mine.size() - 1))]; };
        if (!i) alone = mean;
        printf("%-44s %4d %7d %11.1f %11.1f %11.1f %6.2f\n", one.name.c_str(), busy, i ? all : 1, mean, at(0.5),
               at(0.99), alone / mean);
    }
}

std::vector<Operation> operations()
{
    std::vector<Operation> all = parallelColour();
    constexpr Layout plane = {1, 1, 1};
    auto halve = [](const Pictures& p) {
        QelSize half = {p.roi.width / 2, p.roi.height / 2};
        succeed(qeliSampleDownH2V2_JPEG_8u_C1R((*p.src)[0], p.src->step(), p.roi, (*p.dst)[0], p.dst->step(), half));
    };
    auto enlarge = [](const Pictures& p) {
        QelSize half = {p.roi.width / 2, p.roi.height / 2};
        succeed(qeliSampleUpH2V2_JPEG_8u_C1R((*p.src)[0], p.src->step(), half, (*p.dst)[0], p.dst->step(), p.roi));
    };
    all.push_back({"SampleDownH2V2", plane, plane, halve});
    all.push_back({"SampleUpH2V2", plane, plane, enlarge});
    return all;
}

void addFunctions(std::vector<LoadCase>& cases)
{
    for (const Operation& operation : operations())
        for (QelSize roi : {QelSize{200, 150}, QelSize{400, 300}, QelSize{1920, 1080}}) {
            Pictures pictures = {std::make_shared<Planes>(operation.src, roi.width, roi.height, false),
                                 std::make_shared<Planes>(operation.dst, roi.width, roi.height, false), roi};
            std::string size = " " + std::to_string(roi.width) + "x" + std::to_string(roi.height);
            cases.push_back({operation.name + size, [=, work = operation.work] { work(pictures); }});
        }
}

std::string sizeOf(const codec::Picture& picture)
{
    return " " + std::to_string(picture.width()) + "x" + std::to_string(picture.height());
}

void addJpeg(std::vector<LoadCase>& cases, const codec::Picture& picture)
{
    using codec::jpeg::EncodeOptions;
    const std::pair<std::string, EncodeOptions> kinds[] = {
        {"4:2:0", {}},
        {"4:4:4", {.sampling = codec::jpeg::kSampling444}},
        {"4:2:0 own tables", {.optimiseTables = true}},
        {"4:4:4 own tables", {.sampling = codec::jpeg::kSampling444, .optimiseTables = true}},
        {"progressive", {.progressive = true}}};
    for (const auto& kind : kinds) {
        std::string name = "JPEG " + kind.first + sizeOf(picture);
        const EncodeOptions options = kind.second;
        cases.push_back({"encode " + name, [&picture, options] { codec::jpeg::encode(picture, options); }});
        cases.push_back(
            {"decode " + name, [file = codec::jpeg::encode(picture, options)] { codec::jpeg::decode(file); }});
    }
}

void addJpeg2000(std::vector<LoadCase>& cases, const codec::Picture& picture)
{
    codec::j2k::EncodeOptions options = {.isLossless = true};
    std::string name = "JPEG 2000" + sizeOf(picture);
    cases.push_back({"encode " + name, [&picture, options] { codec::j2k::encode(picture, options); }});
    cases.push_back({"decode " + name, [file = codec::j2k::encode(picture, options)] { codec::j2k::decode(file); }});
}

void addCodec(std::vector<LoadCase>& cases)
{
    const codec::Picture &small = pictures().front().picture, &usual = pictures().back().picture;
    static const codec::Picture kLarge = repeated(usual, 3, 2);
    for (const codec::Picture* picture : {&small, &usual, &kLarge}) addJpeg(cases, *picture);
    for (const codec::Picture* picture : {&small, &usual}) addJpeg2000(cases, *picture);
}

}

void measureLoad(const std::string& filter)
{
    std::regex wanted(filter);
    int all = codec::usableProcessors();
    std::vector<LoadCase> cases;
    addCodec(cases);
    addFunctions(cases);
    std::erase_if(cases, [&](const LoadCase& one) { return !std::regex_search(one.name, wanted); });
    setvbuf(stdout, nullptr, _IOLBF, 0);
    printf("%-44s %4s %7s %11s %11s %11s %6s\n", "microseconds a call", "busy", "threads", "mean", "median",
           "99 of 100", "faster");
    for (int busy : {0, 1, 2}) {
        BusyPrograms programs(busy * all);
        for (const LoadCase& one : cases) measure(one, busy, all);
    }
}

}
