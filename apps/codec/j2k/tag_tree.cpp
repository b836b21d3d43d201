// SPDX-License-Identifier: Apache-2.0
// Layout of tag trees.
#include "codec/j2k/tag_tree.h"

namespace qel::codec::j2k {

TagTreeShape::TagTreeShape(uint32_t across, uint32_t down)
{
    if (across == 0 || down == 0) return;
    for (;;) {
        levels_.push_back({nodes_, across});
        nodes_ += size_t(across) * down;
        if (across == 1 && down == 1) break;
        across = (across + 1) / 2;
        down = (down + 1) / 2;
    }
}

}
