// Convex hulls, and slopes by bisection.
#include "codec/j2k_rate_allocation.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "codec/error.h"
#include "codec/j2k_code_segments.h"
#include "codec/j2k_packet_writer.h"

namespace qel::codec {

namespace {

constexpr double kStepsPerOctave = 1024;
// Beyond those of any code-block.
constexpr J2kSlope kSteepest = 1 << 18;
// The bytes of all layers are at most so many times those of the first.
constexpr double kLayerSpan = 64;

J2kSlope slopeOf(double error, double bytes)
{
    // Nothing for it is a bargain, but a finite one.
    double slope = std::log2(error / std::max(bytes, 1.0 / 64)) * kStepsPerOctave;
    return J2kSlope(std::clamp(slope, -double(kSteepest), double(kSteepest)));
}

template <class Visit> void forBlocks(std::span<const J2kEncodedTile> tiles, Visit visit)
{
    for (const J2kEncodedTile& tile : tiles)
        for (const J2kEncodedPrecinct& precinct : tile.precincts)
            for (const J2kEncodedBand& band : precinct.bands)
                for (const J2kEncodedBlock& block : band.blocks) visit(block);
}

// The smallest slope for which `fits` is true, which it is from some slope on.
template <class Fits> J2kSlope smallestSlope(J2kSlope low, J2kSlope high, Fits fits)
{
    while (low < high) {
        J2kSlope middle = low + (high - low) / 2;
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
    explicit Layers(std::span<const J2kEncodedTile> tiles)
    {
        for (const J2kEncodedTile& tile : tiles)
            for (const J2kEncodedPrecinct& precinct : tile.precincts) writers_.emplace_back(precinct);
        tried_ = writers_;
    }

    // Bytes of all packets to the next layer, if that has all that is worth the slope.
    uint64_t bytesWith(J2kSlope slope)
    {
        uint64_t bytes = bytes_;
        for (size_t i = 0; i < writers_.size(); ++i) {
            tried_[i] = writers_[i];
            tried_[i].next(slope, packet_);
            bytes += packet_.size();
        }
        return bytes;
    }
    void accept(J2kSlope slope)
    {
        bytes_ = bytesWith(slope);
        std::swap(writers_, tried_);
    }

private:
    std::vector<J2kPacketWriter> writers_, tried_;
    J2kPacket packet_;
    uint64_t bytes_ = 0;
};

}

void findTruncations(J2kEncodedBlock& block, int style)
{
    bool onlyAtEnds = style & j2k_style::kPredictableTermination;
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

J2kSlope slopeOfStep(double step)
{
    // At high rates the error is step^2 / 12, and a bit more quarters it.
    return slopeOf(step * step / 12 * 2 * std::log(2.0) * 8, 1);
}

J2kSlope slopeForError(std::span<const J2kEncodedTile> tiles, double error)
{
    // The steepest slope that is good enough lies one below the smallest that is not.
    auto isTooMuch = [&](J2kSlope slope) {
        double left = 0;
        forBlocks(tiles, [&](const J2kEncodedBlock& block) { left += block.errorOf(block.passesAt(slope)); });
        return left > error;
    };
    return smallestSlope(-kSteepest, kSteepest + 1, isTooMuch) - 1;
}

std::vector<J2kSlope> allocateLayers(std::span<const J2kEncodedTile> tiles, int count, const J2kBudget& budget)
{
    Layers layers(tiles);
    uint64_t total = budget.bytes ? *budget.bytes : count > 1 ? layers.bytesWith(budget.slope) : 0;
    double ratio = std::min(2.0, std::pow(kLayerSpan, 1.0 / std::max(1, count - 1)));
    std::vector<J2kSlope> slopes;
    J2kSlope steepest = kSteepest;
    auto addWithin = [&](uint64_t bytes) {
        J2kSlope lowest = std::max(budget.slope, -kSteepest);
        steepest = smallestSlope(lowest, steepest, [&](J2kSlope slope) { return layers.bytesWith(slope) <= bytes; });
        slopes.push_back(steepest);
        layers.accept(steepest);
    };
    for (int later = count - 1; later > 0; --later) addWithin(uint64_t(double(total) * std::pow(ratio, -later)));
    if (!budget.bytes) {
        slopes.push_back(budget.slope);
        return slopes;
    }
    uint64_t empty = layers.bytesWith(steepest);
    if (empty > *budget.bytes) throw CodecError("the rate allows for fewer bytes than empty packets take");
    addWithin(*budget.bytes);
    return slopes;
}

}
