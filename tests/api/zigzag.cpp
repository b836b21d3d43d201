// SPDX-License-Identifier: Apache-2.0
// The zig-zag tables, against a walk along the diagonals.
#include "jpeg/block/zigzag.h"

#include <gtest/gtest.h>

namespace {

TEST(Zigzag, TablesFollowTheDiagonals)
{
    int position = 0;
    for (int diagonal = 0; diagonal < 15; ++diagonal)
        for (int i = 0; i <= diagonal; ++i) {
            int row = diagonal % 2 == 0 ? diagonal - i : i, column = diagonal - row;
            if (row > 7 || column > 7) continue;
            EXPECT_EQ(zigzag_index_Fwd[8 * row + column], position);
            EXPECT_EQ(zigzag_index_Inv[position], 8 * row + column);
            EXPECT_EQ(own_qj_izigzag_index[position], 8 * row + column);
            ++position;
        }
    EXPECT_EQ(position, 64);
    for (int guard = 64; guard < 72; ++guard) EXPECT_EQ(own_qj_izigzag_index[guard], 63);
}

}
