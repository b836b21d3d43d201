// SPDX-License-Identifier: Apache-2.0
// Means within the window, first down columns, then along rows, in pieces that stay in the first cache.
#include "codec/base/similarity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

#include "codec/base/compare.h"
#include "codec/base/parallel.h"

namespace qel::codec {
namespace {

constexpr int kWindow = 11, kPlacesAtOnce = 256;
constexpr double kDeviation = 1.5, kK1 = 0.01, kK2 = 0.03;

// Of the samples a and b of two pictures.
enum Mean { kA, kB, kAA, kBB, kAB, kMeans };

std::array<double, kWindow> gaussian()
{
    std::array<double, kWindow> weights;
    for (int i = 0; i < kWindow; ++i) weights[size_t(i)] = std::exp(-0.5 * std::pow((i - kWindow / 2) / kDeviation, 2));
    double sum = std::accumulate(weights.begin(), weights.end(), 0.0);
    for (double& weight : weights) weight /= sum;
    return weights;
}

template <class T> class Comparer {
public:
    Comparer(const Picture& a, const Picture& b, int channel) : a_(a), b_(b), channel_(channel)
    {
        double range = (1 << a.precision()) - 1;
        c1_ = std::pow(kK1 * range, 2);
        c2_ = std::pow(kK2 * range, 2);
    }

    // Over all windows whose first row is row y.
    double sum(int y) const
    {
        double sum = 0;
        int places = a_.width() - kWindow + 1;
        for (int x = 0; x < places; x += kPlacesAtOnce) sum += piece(x, y, std::min(kPlacesAtOnce, places - x));
        return sum;
    }

private:
    double piece(int x, int y, int places) const
    {
        double down[kMeans][kPlacesAtOnce + kWindow - 1] = {}, means[kMeans][kPlacesAtOnce] = {};
        for (int i = 0; i < kWindow; ++i) addRow(x, y + i, places + kWindow - 1, weights_[size_t(i)], down);
        for (int mean = 0; mean < kMeans; ++mean)
            for (int i = 0; i < kWindow; ++i)
                for (int j = 0; j < places; ++j) means[mean][j] += weights_[size_t(i)] * down[mean][i + j];
        double sum = 0;
        for (int j = 0; j < places; ++j) {
            double a = means[kA][j], b = means[kB][j];
            double variances = means[kAA][j] - a * a + means[kBB][j] - b * b, covariance = means[kAB][j] - a * b;
            sum += (2 * a * b + c1_) * (2 * covariance + c2_) / ((a * a + b * b + c1_) * (variances + c2_));
        }
        return sum;
    }

    void addRow(int x, int y, int width, double weight, double (&down)[kMeans][kPlacesAtOnce + kWindow - 1]) const
    {
        int channels = a_.channels();
        const T *p = a_.row<T>(y) + ptrdiff_t(channels) * x + channel_,
                *q = b_.row<T>(y) + ptrdiff_t(channels) * x + channel_;
        for (int i = 0; i < width; ++i, p += channels, q += channels) {
            double a = *p, b = *q;
            down[kA][i] += weight * a;
            down[kB][i] += weight * b;
            down[kAA][i] += weight * (a * a);
            down[kBB][i] += weight * (b * b);
            down[kAB][i] += weight * (a * b);
        }
    }

    const Picture &a_, &b_;
    const int channel_;
    const std::array<double, kWindow> weights_ = gaussian();
    double c1_, c2_;
};

template <class T> double similarity(const Picture& a, const Picture& b, int channel)
{
    if (a.width() < kWindow || a.height() < kWindow) return std::numeric_limits<double>::quiet_NaN();
    Comparer<T> comparer(a, b, channel);
    std::vector<double> sums(size_t(a.height() - kWindow + 1));
    int threads = threadsFor(16 * uint64_t(a.width()) * uint64_t(a.height()));
    withThreads(threads, [&] {
        forEachInParallel(int(sums.size()), threads, [&](int y) { sums[size_t(y)] = comparer.sum(y); });
    });
    return std::accumulate(sums.begin(), sums.end(), 0.0) / double(sums.size()) / (a.width() - kWindow + 1);
}

}

std::vector<double> structuralSimilarity(const Picture& a, const Picture& b)
{
    checkComparable(a, b);
    std::vector<double> channels;
    for (int c = 0; c < a.channels(); ++c)
        channels.push_back(a.bytesPerSample() == 1 ? similarity<uint8_t>(a, b, c) : similarity<uint16_t>(a, b, c));
    return channels;
}

}
