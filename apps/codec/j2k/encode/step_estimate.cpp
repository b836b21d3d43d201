// SPDX-License-Identifier: Apache-2.0
// Counts of coefficients by their octave, and what coding them plane by plane would take.
#include "codec/j2k/encode/step_estimate.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <vector>

#include "codec/j2k/encode/band_energy.h"
#include "codec/j2k/encode/forward_transform.h"

namespace qel::codec::j2k {

namespace {

// One patch is looked at in each cell.
constexpr uint32_t kPatch = 128, kCell = 384;

// More make no difference to a patch.
constexpr int kMostLevels = 5;

// Octaves of magnitudes, in errors of the picture; what is smaller counts as of the lowest one.
constexpr int kLowestOctave = -6, kOctaves = 48;

// What the contexts of the coder save on the entropy of its decisions.
constexpr double kContextGain = 0.9;

struct BandStatistics {
    std::array<double, kOctaves> count = {}, energy = {};

    void add(const Plane<float>& band, double weight)
    {
        auto scale = float(std::sqrt(weight));
        for (uint32_t y = 0; y < band.height(); ++y)
            for (uint32_t x = 0; x < band.width(); ++x) {
                float magnitude = std::fabs(band.row(y)[x]) * scale;
                int exponent = int(std::bit_cast<uint32_t>(magnitude) >> 23) - 127;
                auto octave = size_t(std::clamp(exponent - kLowestOctave, 0, kOctaves - 1));
                ++count[octave];
                energy[octave] += double(magnitude) * double(magnitude);
            }
    }
    // Bits of all planes from an octave up: which samples become significant, their signs, and the bits below.
    double bits(int lowest) const
    {
        double sum = 0, significant = 0, left = 0;
        for (double number : count) left += number;
        for (int octave = kOctaves; octave-- > lowest;) {
            double number = count[size_t(octave)];
            sum += entropy(number, left) + number + significant;
            significant += number;
            left -= number;
        }
        return kContextGain * sum;
    }
    // Squared error that is left by them.
    double error(int lowest) const
    {
        double step = std::ldexp(1.0, lowest + kLowestOctave), sum = 0;
        for (int octave = 0; octave < kOctaves; ++octave)
            sum += octave < lowest ? energy[size_t(octave)] : count[size_t(octave)] * step * step / 12;
        return sum;
    }

private:
    // Bits to tell which of some samples it is.
    static double entropy(double chosen, double all)
    {
        if (chosen <= 0 || chosen >= all) return 0;
        return chosen * std::log2(all / chosen) + (all - chosen) * std::log2(all / (all - chosen));
    }
};

class Statistics {
public:
    Statistics(const Picture& picture, int levels)
        : levels_(std::min(levels, kMostLevels)), transforms_(picture.space() == ColourSpace::rgb)
    {
        auto width = uint32_t(picture.width()), height = uint32_t(picture.height());
        uint32_t across = ceilDivide(width, kCell), down = ceilDivide(height, kCell);
        for (uint32_t row = 0; row < down; ++row)
            for (uint32_t column = 0; column < across; ++column) {
                auto [x0, x1] = patch(column, across, width);
                auto [y0, y1] = patch(row, down, height);
                add(picture, {x0, y0, x1, y1});
            }
    }

    // The step, a power of 2 or between two of them, down to which `measure(band, octave)` of all bands sums up to
    // `wanted` for each pixel.
    template <class Measure> double stepFor(double wanted, Measure measure) const
    {
        auto measured = [&](int octave) {
            double sum = 0;
            for (const BandStatistics& band : bands_) sum += measure(band, octave);
            return sum / pixels_;
        };
        double last = measured(0);
        bool isRising = measured(kOctaves - 1) > last;
        for (int octave = 1; octave < kOctaves; ++octave) {
            double next = measured(octave);
            if (isRising ? next >= wanted : next <= wanted) {
                double part = next == last ? 1 : std::clamp((wanted - last) / (next - last), 0.0, 1.0);
                return std::exp2(octave - 1 + part + kLowestOctave);
            }
            last = next;
        }
        return std::exp2(kOctaves - 1 + kLowestOctave);
    }

private:
    // The middle of a cell.
    static std::pair<uint32_t, uint32_t> patch(uint32_t cell, uint32_t cells, uint32_t size)
    {
        uint32_t length = std::min(kPatch, size);
        auto begin = uint32_t((2 * cell + 1) * uint64_t(size - length) / (2 * cells));
        return {begin, begin + length};
    }

    void add(const Picture& picture, const Rect& rect)
    {
        using enum BandKind;
        pixels_ += double(rect.area());
        auto components = forwardTransform<float>(picture, 0, rect, transforms_, levels_, 1);
        size_t next = 0;
        for (size_t c = 0; c < components.size(); ++c) {
            double weight = transforms_ ? componentEnergy(false, int(c)) : 1;
            auto addBand = [&](int level, BandKind kind) {
                if (next == bands_.size()) bands_.emplace_back();
                bands_[next++].add(components[c].band(level, kind),
                                   weight * bandEnergy(false, rect.width(), rect.height(), level, kind));
            };
            addBand(levels_, ll);
            for (int level = levels_; level > 0; --level)
                for (BandKind kind : {hl, lh, hh}) addBand(level, kind);
        }
    }

    const int levels_;
    const bool transforms_;
    std::vector<BandStatistics> bands_;
    double pixels_ = 0;
};

}

double stepForRate(const Picture& picture, int levels, double bitsPerPixel)
{
    return Statistics(picture, levels).stepFor(bitsPerPixel, [](const BandStatistics& band, int octave) {
        return band.bits(octave);
    });
}

double stepForError(const Picture& picture, int levels, double meanSquaredError)
{
    return Statistics(picture, levels)
        .stepFor(meanSquaredError * picture.channels(),
                 [](const BandStatistics& band, int octave) { return band.error(octave); });
}

}
