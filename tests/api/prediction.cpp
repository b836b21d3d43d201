// SPDX-License-Identifier: Apache-2.0
// Lossless prediction: values, order of faults. Files of every width and predictor try the way back.
#include "qeljx.h"

#include <gtest/gtest.h>

#include <vector>

#include "argument_faults.h"

using namespace qel::test;

namespace {

using Row = std::vector<int16_t>;

Row rowOf(std::initializer_list<int> samples)
{
    Row row;
    for (int sample : samples) row.push_back(int16_t(sample));
    return row;
}

Row firstDifferences(const Row& row, int precision, int pointTransform)
{
    Row out(row.size());
    EXPECT_EQ(qeliDiffPredFirstRow_JPEG_16s_C1(row.data(), out.data(), int(row.size()), precision, pointTransform),
              qelStsNoErr);
    return out;
}
Row differences(const Row& row, const Row& prev, int predictor)
{
    Row out(row.size());
    EXPECT_EQ(qeliDiffPredRow_JPEG_16s_C1(row.data(), prev.data(), out.data(), int(row.size()), predictor),
              qelStsNoErr);
    return out;
}

TEST(Prediction, FirstRows)
{
    EXPECT_EQ(firstDifferences(rowOf({128, 128, 128}), 8, 0), rowOf({0, 0, 0}));
    EXPECT_EQ(firstDifferences(rowOf({130, 129, 0, 255}), 8, 0), rowOf({2, -1, -129, 255}));
    EXPECT_EQ(firstDifferences(rowOf({1000}), 12, 2), rowOf({1000 - 512}));
    EXPECT_EQ(firstDifferences(rowOf({65535, 0, 40000}), 16, 0), rowOf({32767, 1, 40000}));
    // 2^-1 and 2^-32 count as 2^31 and 2^0.
    EXPECT_EQ(firstDifferences(rowOf({7}), 8, 8), rowOf({7}));
    EXPECT_EQ(firstDifferences(rowOf({7}), 8, 39), rowOf({6}));
}

// Worked out by hand from the neighbours 7, 20 and 25 (left, above, above to the left) of 30, and from neighbours of
// both signs of 16 bits.
TEST(Prediction, Rows)
{
    const struct {
        int predictor, difference, ofLarge;
    } table[] = {{1, 30 - 7, 1 - 50000},
                 {2, 30 - 20, 1 - 5},
                 {3, 30 - 25, 1 - 60000},
                 {4, 30 - 2, 1 - (50000 + 5 - 60000)},
                 {5, 30 - (7 - 3), 1 - (50000 + 2770)}, // (5 - -5536) / 2 = 2770.5
                 {6, 30 - (20 - 9), 1 - (5 - 5000)},    // (-15536 - -5536) / 2
                 {7, 30 - 13, 1 - (-7766)}};            // (-15536 + 5) / 2 = -7765.5
    for (auto& row : table) {
        EXPECT_EQ(differences(rowOf({7, 30}), rowOf({25, 20}), row.predictor), rowOf({7 - 25, row.difference}))
            << row.predictor;
        EXPECT_EQ(differences(rowOf({50000, 1}), rowOf({60000, 5}), row.predictor), rowOf({-10000, row.ofLarge}))
            << row.predictor;
        EXPECT_EQ(differences(rowOf({7}), rowOf({25}), row.predictor), rowOf({7 - 25}));
    }
}

TEST(Prediction, OrderOfFaults)
{
    Row a = {1, 2}, out = {7, 7};
    int16_t *src = a.data(), *dst = out.data();
    for (auto f : {qeliDiffPredFirstRow_JPEG_16s_C1, qeliReconstructPredFirstRow_JPEG_16s_C1})
        expectFaults(f, {src, dst, 2, 8, 0}, null<0>, null<1>, length<2>, bad<3>(1, 17), bad<4>(-1));
    for (auto f : {qeliDiffPredRow_JPEG_16s_C1, qeliReconstructPredRow_JPEG_16s_C1})
        expectFaults(f, {src, src, dst, 2, 1}, null<0>, null<1>, null<2>, length<3>, bad<4>(0, 8));
    EXPECT_EQ(out, rowOf({7, 7}));
}

}
