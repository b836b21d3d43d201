// SPDX-License-Identifier: Apache-2.0
// Regions of samples that each become another, for functions of the shape source, step, destination, step, size.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "qeljx.h"

namespace qel::test {

// Dense and stepped regions give the same rows, and bytes between rows stay. The largest holds every value of 16 bits.
template <class Src, class Dst, class Function, class Expected> void expectRegions(Function function, Expected expected)
{
    for (QelSize roi : {QelSize{1, 1}, QelSize{7, 3}, QelSize{64, 5}, QelSize{1024, 64}})
        for (int gap : {0, 1, 6}) {
            int srcStep = roi.width * int(sizeof(Src)) + gap, dstStep = roi.width * int(sizeof(Dst)) + gap;
            std::vector<uint8_t> src(srcStep * roi.height), dst(dstStep * roi.height, 0xEE), wanted = dst;
            for (int i = 0; i < roi.width * roi.height; ++i) {
                int r = i / roi.width, c = i % roi.width;
                Src in = Src(40503u * uint32_t(i));
                Dst out = expected(in);
                memcpy(&src[r * srcStep + c * sizeof in], &in, sizeof in);
                memcpy(&wanted[r * dstStep + c * sizeof out], &out, sizeof out);
            }
            ASSERT_EQ(function((const Src*)src.data(), srcStep, (Dst*)dst.data(), dstStep, roi), qelStsNoErr);
            ASSERT_TRUE(dst == wanted) << roi.width << " x " << roi.height << ", " << gap << " bytes apart";
        }
}

}
