// SPDX-License-Identifier: Apache-2.0
// Convex hulls, and slopes by bisection.
#include "codec/j2k/encode/rate_allocation.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "codec/base/error.h"
#include "codec/j2k/code_segments.h"
#include "codec/j2k/encode/packet_writer.h"

namespace qel::codec::j2k {

namespace {

constexpr double kStepsPerOctave = 1024;
// Beyond those of any code-block.
constexpr Slope kSteepest = 1 << 18;
// What the header of a packet may have of a code-block, the first time and later.
constexpr uint64_t kFirstHeaderBytes = 8, kHeaderBytes = 3;
// The bytes of all layers are at most so many times those of the first.
constexpr double kLayerSpan = 64;

Slope slopeOf(double error, double bytes)
{
    // Nothing for it is a bargain, but a finite one.
    double slope = std::log2(error / std::max(bytes, 1.0 / 64)) * kStepsPerOctave;
    return Slope(std::clamp(slope, -double(kSteepest), double(kSteepest)));
}

template <class Tile, class Visit> void forBlocks(std::span<Tile> tiles, Visit visit)
{
    for (Tile& tile : tiles)
        for (auto& precinct : tile.precincts)
            for (auto& band : precinct.bands)
                for (auto& block : band.blocks) visit(block);
}

// The smallest slope for which `fits` is true, which it is from some slope on.
template <class Fits> Slope smallestSlope(Slope low, Slope high, Fits fits)
{
    while (low < high) {
        Slope middle = low + (high - low) / 2;
        if (fits(middle))
            high = middle;
        else
            low = middle + 1;
    }
    return low;
}

// Packets of one layer after the other, each to be tried first.
class Layers {
public:
    explicit Layers(std::span<const EncodedTile> tiles)
    {
        for (const EncodedTile& tile : tiles)
            for (const EncodedPrecinct& precinct : tile.precincts) writers_.emplace_back(precinct);
        tried_ = writers_;
    }

    // Bytes of all packets to the next layer, if that has all that is worth the slope.
    uint64_t bytesWith(Slope slope)
    {
        uint64_t bytes = bytes_;
        for (size_t i = 0; i < writers_.size(); ++i) {
            tried_[i] = writers_[i];
            tried_[i].next(slope, packet_);
            bytes += packet_.size();
        }
        return bytes;
    }
    void accept(Slope slope)
    {
        bytes_ = bytesWith(slope);
        std::swap(writers_, tried_);
    }

private:
    std::vector<PacketWriter> writers_, tried_;
    Packet packet_;
    uint64_t bytes_ = 0;
};

// What is left of the budget goes to the best of the next truncations for which it suffices: they get the slope.
void fillUp(std::span<EncodedTile> tiles, Layers& layers, Slope slope, uint64_t bytes)
{
    struct Candidate {
        Truncation* truncation;
        uint64_t bytes;
    };
    std::vector<Candidate> candidates;
    forBlocks(tiles, [&](EncodedBlock& block) {
        int passes = block.passesAt(slope);
        auto next = std::ranges::find_if(block.truncations, [&](auto& t) { return t.passes > passes; });
        if (next == block.truncations.end()) return;
        uint64_t more = block.bytesOf(next->passes) - block.bytesOf(passes);
        candidates.push_back({&*next, more + (passes ? kHeaderBytes : kFirstHeaderBytes)});
    });
    std::ranges::stable_sort(candidates, std::greater(), [](const Candidate& c) { return c.truncation->slope; });
    uint64_t left = bytes - layers.bytesWith(slope);
    std::vector<std::pair<Truncation*, Slope>> changed;
    for (const Candidate& candidate : candidates) {
        if (candidate.bytes > left) continue;
        left -= candidate.bytes;
        changed.emplace_back(candidate.truncation, std::exchange(candidate.truncation->slope, slope));
    }
    if (layers.bytesWith(slope) <= bytes) return;
    for (auto [truncation, before] : changed) truncation->slope = before;
}

}

void findTruncations(EncodedBlock& block, int style)
{
    bool onlyAtEnds = style & style::kPredictableTermination;
    auto gain = [&](int from, int to) { return block.errorOf(from) - block.errorOf(to); };
    auto slope = [&](int from, int to) {
        return slopeOf(gain(from, to), double(block.bytesOf(to)) - block.bytesOf(from));
    };
    block.truncations.clear();
    auto& found = block.truncations;
    for (int passes = 1; passes <= int(block.passes.size()); ++passes) {
        bool isLast = passes == int(block.passes.size());
        if (onlyAtEnds && !isLast && !beginsSegment(style, passes)) continue;
        auto before = [&](size_t back) { return found.size() >= back ? found[found.size() - back].passes : 0; };
        if (gain(before(1), passes) <= 0) continue;
        // Points inside the hull go.
        while (!found.empty() && slope(before(1), passes) >= found.back().slope) found.pop_back();
        found.push_back({passes, slope(before(1), passes)});
    }
}

Slope slopeOfStep(double step)
{
    // At high rates the error is step^2 / 12, and a bit more quarters it.
    return slopeOf(step * step / 12 * 2 * std::log(2.0) * 8, 1);
}

Slope slopeForError(std::span<const EncodedTile> tiles, double error)
{
    // The steepest slope that is good enough lies one below the smallest that is not.
    auto isTooMuch = [&](Slope slope) {
        double left = 0;
        forBlocks(tiles, [&](const EncodedBlock& block) { left += block.errorOf(block.passesAt(slope)); });
        return left > error;
    };
    return smallestSlope(-kSteepest, kSteepest + 1, isTooMuch) - 1;
}

std::vector<Slope> allocateLayers(std::span<EncodedTile> tiles, int count, const Budget& budget)
{
    Layers layers(tiles);
    uint64_t total = budget.bytes ? *budget.bytes : count > 1 ? layers.bytesWith(budget.slope) : 0;
    double ratio = std::min(2.0, std::pow(kLayerSpan, 1.0 / std::max(1, count - 1)));
    std::vector<Slope> slopes;
    auto slopeWithin = [&](uint64_t bytes) {
        Slope lowest = std::max(budget.slope, -kSteepest), steepest = slopes.empty() ? kSteepest : slopes.back();
        return smallestSlope(lowest, steepest, [&](Slope slope) { return layers.bytesWith(slope) <= bytes; });
    };
    for (int later = count - 1; later > 0; --later) {
        slopes.push_back(slopeWithin(uint64_t(double(total) * std::pow(ratio, -later))));
        layers.accept(slopes.back());
    }
    slopes.push_back(budget.bytes ? slopeWithin(*budget.bytes) : budget.slope);
    if (!budget.bytes) return slopes;
    if (layers.bytesWith(slopes.back()) > *budget.bytes)
        throw CodecError("the rate allows for fewer bytes than empty packets take");
    fillUp(tiles, layers, slopes.back(), *budget.bytes);
    return slopes;
}

}
