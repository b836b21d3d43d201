// SPDX-License-Identifier: Apache-2.0
#include "traffic.h"

#include <memory>
#include <numeric>

#include <benchmark/benchmark.h>

#include "buffers.h"
#include "core/dispatch.h"
#include "traffic_kernels.h"

namespace qel::bench {
namespace {

const TrafficKernels::Ratio& ratioOf(int in, int out)
{
    int common = std::gcd(in, out);
    for (auto& ratio : kernels<TrafficKernels>().ratios)
        if (ratio.in * common == in && ratio.out * common == out) return ratio;
    throw std::runtime_error("no loop for this ratio of bytes in and out");
}

}

void addTraffic(Contest& contest, double units, int in, int out)
{
    auto& ratio = ratioOf(in, out);
    int width = kernels<TrafficKernels>().width;
    auto steps = size_t(units * in / (ratio.in * width));
    auto src = std::make_shared<Memory>(steps * ratio.in * width),
         dst = std::make_shared<Memory>(steps * ratio.out * width);
    auto loop = [=](TrafficKernels::Move move) {
        return [=] { benchmark::DoNotOptimize(move(src->data(), dst->data(), steps)); };
    };
    contest.contestants.push_back({"traffic", loop(ratio.plain)});
    contest.contestants.push_back({"traffic streaming", loop(ratio.streaming)});
}

void addTrafficInPlace(Contest& contest, double units, int bytes)
{
    auto move = ratioOf(1, 1).plain;
    auto steps = size_t(units * bytes / kernels<TrafficKernels>().width);
    auto data = std::make_shared<Memory>(steps * kernels<TrafficKernels>().width);
    contest.contestants.push_back(
        {"traffic", [=] { benchmark::DoNotOptimize(move(data->data(), data->data(), steps)); }});
}

}
