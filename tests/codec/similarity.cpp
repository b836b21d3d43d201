// SPDX-License-Identifier: Apache-2.0
// Structural similarity: the formula of its authors, window by window.
#include "codec/base/similarity.h"

#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

// Of all windows, with variances summed up about the means.
double slowSimilarity(const Picture& a, const Picture& b, int channel)
{
    auto sample = [&](const Picture& p, int x, int y) -> double {
        int i = x * p.channels() + channel;
        return p.bytesPerSample() == 1 ? p.row(y)[i] : p.row<uint16_t>(y)[i];
    };
    double range = (1 << a.precision()) - 1, c1 = 0.01 * range * 0.01 * range, c2 = 0.03 * range * 0.03 * range;
    double sum = 0;
    for (int y = 5; y < a.height() - 5; ++y)
        for (int x = 5; x < a.width() - 5; ++x) {
            auto mean = [&](auto value) {
                double total = 0, weights = 0;
                for (int v = -5; v <= 5; ++v)
                    for (int u = -5; u <= 5; ++u) {
                        double weight = std::exp(-(u * u + v * v) / 4.5);
                        total += weight * value(sample(a, x + u, y + v), sample(b, x + u, y + v));
                        weights += weight;
                    }
                return total / weights;
            };
            double p = mean([](double s, double) { return s; }), q = mean([](double, double t) { return t; });
            double variances = mean([&](double s, double t) { return (s - p) * (s - p) + (t - q) * (t - q); });
            double covariance = mean([&](double s, double t) { return (s - p) * (t - q); });
            sum += (2 * p * q + c1) * (2 * covariance + c2) / ((p * p + q * q + c1) * (variances + c2));
        }
    return sum / (a.width() - 10) / (a.height() - 10);
}

TEST(Similarity, IsThatOfTheFormula)
{
    const struct {
        int width, height, precision;
        ColourSpace space;
    } table[] = {{11, 11, 8, ColourSpace::grey}, {270, 13, 16, ColourSpace::grey}, {20, 31, 8, ColourSpace::rgb}};
    for (auto& row : table) {
        Picture a = drawnPicture(row.width, row.height, row.space, row.precision);
        Picture b = randomPicture(row.width, row.height, row.space, row.precision);
        std::vector<double> similarity = structuralSimilarity(a, b), same = structuralSimilarity(b, b);
        for (int c = 0; c < a.channels(); ++c) {
            EXPECT_NEAR(similarity[size_t(c)], slowSimilarity(a, b, c), 1e-9);
            EXPECT_NEAR(same[size_t(c)], 1, 1e-12);
        }
    }
    Picture small = randomPicture(10, 99, ColourSpace::grey, 8);
    EXPECT_TRUE(std::isnan(structuralSimilarity(small, small)[0]));
}

}
