// SPDX-License-Identifier: Apache-2.0
// Arithmetic of MCUs.
#include "codec/jpeg/layout.h"

namespace qel::codec::jpeg {

namespace {

int ceilDivide(int a, int b) { return (a + b - 1) / b; }

int mcusAcrossFrame(const Info& info) { return ceilDivide(info.width, info.unitSide() * info.maxH()); }
int mcusDownFrame(const Info& info) { return ceilDivide(info.height, info.unitSide() * info.maxV()); }

}

ScanLayout::ScanLayout(const Info& info, const std::vector<int>& components)
{
    if (components.size() == 1) {
        const Component& only = info.components[components[0]];
        mcusAcross = ceilDivide(only.width, info.unitSide());
        mcusDown = ceilDivide(only.height, info.unitSide());
        shares.push_back({components[0], 1, 1});
    } else {
        mcusAcross = mcusAcrossFrame(info);
        mcusDown = mcusDownFrame(info);
        for (int i : components) shares.push_back({i, info.components[i].h, info.components[i].v});
    }
    for (int slot = 0; slot < int(shares.size()); ++slot)
        for (int dy = 0; dy < shares[slot].down; ++dy)
            for (int dx = 0; dx < shares[slot].across; ++dx) blocks.push_back({slot, dx, dy});
}

void setComponentSizes(Info& info)
{
    for (Component& component : info.components) {
        component.width = ceilDivide(info.width * component.h, info.maxH());
        component.height = ceilDivide(info.height * component.v, info.maxV());
    }
}

int paddedBlocksAcross(const Info& info, const Component& component) { return mcusAcrossFrame(info) * component.h; }

int paddedBlocksDown(const Info& info, const Component& component) { return mcusDownFrame(info) * component.v; }

}
