// SPDX-License-Identifier: Apache-2.0
// qelbench: Google Benchmark's command line, and --rounds and --turn_ms for the length of the measurement; or --load
// REGEX.
#include <malloc.h>
#include <omp.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <exception>
#include <fstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "cases.h"
#include "codec/base/parallel.h"
#include "contest.h"

namespace {

// Takes "--name=value" out of the arguments.
double option(int& argc, char** argv, const std::string& name, double value)
{
    std::string prefix = "--" + name + "=";
    int kept = 0;
    for (int i = 0; i < argc; ++i) {
        if (strncmp(argv[i], prefix.c_str(), prefix.size()) == 0)
            value = atof(argv[i] + prefix.size());
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    return value;
}

const char* bestBuild()
{
    return qel::bench::canRun("avx512") ? "avx512" : qel::bench::canRun("avx2") ? "avx2" : "baseline";
}

// As the kernel names it; empty where it does not.
std::string processorName()
{
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
    return "";
}

// One line for each finished case; the table comes from the file of results.
class Progress : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (auto& run : runs) {
            printf("%s", run.run_name.function_name.c_str());
            if (run.error_occurred) printf(": %s", run.error_message.c_str());
            for (auto& [name, counter] : run.counters)
                if (name.starts_with("ratio:")) printf("  %s %.2f", name.c_str() + 6, counter.value);
            printf("\n");
            fflush(stdout);
        }
    }
};

// All cases, in the order of the table.
void addCases()
{
    using namespace qel::bench;
    addLevelShiftCases();
    addColourCases();
    addSamplingCases();
    addMcuCases();
    addBlockCases();
    addHuffmanCases();
    addProgressiveCases();
    addLosslessCases();
    addCodecCases();
    addJ2kEncodeCases();
    addJ2kWaveletCases();
    addComponentTransformCases();
    addWaveletCases();
    addJ2kDecodeCases();
    addCodeBlockCases();
    addSupportCases();
}

}

int main(int argc, char** argv)
{
    // Memory that a peer frees stays in the process; or else each of its calls would pay for fresh pages.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, -1);
    mallopt(M_TOP_PAD, 64 << 20);
    omp_set_num_threads(1);
    qel::codec::ThreadLimit alone(1);
    double rounds = option(argc, argv, "rounds", 9), turn = option(argc, argv, "turn_ms", 20);
    if (!(rounds >= 1 && rounds <= 1000 && turn > 0 && turn <= 10000)) {
        fprintf(stderr, "qelbench: --rounds takes 1 to 1000, --turn_ms more than 0 and up to 10000\n");
        return 2;
    }
    if (argc == 3 && !strcmp(argv[1], "--load")) {
        qel::bench::measureLoad(argv[2]);
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::AddCustomContext("build", bestBuild());
    benchmark::AddCustomContext("processor", processorName());
    try {
        addCases();
    } catch (const std::exception& e) {
        fprintf(stderr, "qelbench: %s\n", e.what());
        return 1;
    }
    qel::bench::registerCases(int(rounds), turn * 1e-3);
    Progress progress;
    benchmark::RunSpecifiedBenchmarks(&progress);
    benchmark::Shutdown();
    return 0;
}
