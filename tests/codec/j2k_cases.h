// SPDX-License-Identifier: Apache-2.0
// What JPEG 2000 files can be like, as far as the peer makes them.
#pragma once

#include "openjpeg_peer.h"

namespace qel::test {

inline std::vector<OpenJpegCase> openJpegCases()
{
    namespace j2k = codec::j2k;
    std::vector<OpenJpegCase> cases = {
        {.name = "plain"},
        {.name = "jp2", .components = 3, .transformsComponents = true, .isJp2 = true},
        {.name = "no_levels", .levels = 0},
        {.name = "tiny", .width = 1, .height = 1, .levels = 0},
        {.name = "narrow", .width = 2, .height = 300, .levels = 1, .blockWidth = 4, .blockHeight = 1024},
        {.name = "irreversible", .components = 3, .layers = 4, .isReversible = false, .transformsComponents = true},
        {.name = "deep", .precision = 16, .layers = 3},
        {.name = "offsets", .x0 = 37, .y0 = 11, .tileWidth = 41, .tileHeight = 33, .tx0 = 5, .ty0 = 9, .levels = 4},
        {.name = "many_layers", .layers = 20, .blockWidth = 8, .blockHeight = 8},
        {.name = "region", .layers = 2, .roiShift = 7},
    };
    for (int style : {1, 2, 4, 8, 16, 32, 5, 63})
        cases.push_back({.name = "style_" + std::to_string(style), .precision = 12, .layers = 5, .style = style});
    const char* orders[] = {"lrcp", "rlcp", "rpcl", "pcrl", "cprl"};
    for (int order = 0; order < 5; ++order) {
        OpenJpegCase base = {.name = orders[order], .components = 3, .order = j2k::Order(order), .layers = 3};
        base.precincts = {{32, 64}, {64, 16}};
        base.hasSop = base.hasEph = true;
        cases.push_back(base);
        auto add = [&](const char* what, auto change) {
            OpenJpegCase changed = base;
            changed.name += what;
            change(changed);
            cases.push_back(changed);
        };
        add("_subsampled", [](auto& c) { c.chromaDx = 2, c.chromaDy = 3, c.x0 = 7, c.y0 = 5; });
        add("_tiles", [](auto& c) { c.tileWidth = 50, c.tileHeight = 39, c.x0 = 21, c.y0 = 3, c.tx0 = 2; });
        add("_small_precincts", [](auto& c) {
            c.hasSop = c.hasEph = false, c.precincts = {{32, 16}}, c.chromaDx = 3, c.blockWidth = 4;
        });
        add("_parts", [](auto& c) { c.precincts.clear(), c.tileParts = 'R', c.tileWidth = c.tileHeight = 48; });
    }
    return cases;
}

}
