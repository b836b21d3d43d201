// SPDX-License-Identifier: Apache-2.0
// An independent JPEG 2000 codec (OpenJPEG) to make files with, and to read them.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "codec/base/bytes.h"
#include "codec/base/picture.h"
#include "codec/formats/pgx.h"
#include "codec/j2k/headers.h"

namespace qel::test {

// How to code a made-up picture.
struct OpenJpegCase {
    std::string name = {};
    int width = 97, height = 71, x0 = 0, y0 = 0;
    int components = 1, precision = 8;
    int chromaDx = 1, chromaDy = 1;                      // of all components but the first
    int tileWidth = 0, tileHeight = 0, tx0 = 0, ty0 = 0; // no tiles if 0
    codec::j2k::Order order = codec::j2k::Order::lrcp;
    int layers = 1, levels = 3;
    int blockWidth = 32, blockHeight = 32, style = 0;
    bool isReversible = true, transformsComponents = false;
    std::vector<std::pair<int, int>> precincts = {}; // from the highest resolution down
    bool hasSop = false, hasEph = false;
    float ratio = 0;    // of the samples' size to that of the file; 0 for all that can be coded
    int roiShift = 0;   // of the first component
    char tileParts = 0; // a new tile-part for each 'R'esolution, 'L'ayer or 'C'omponent
    std::vector<codec::j2k::Progression> changes = {}; // of the order, in the first tile
    bool isJp2 = false;

    friend void PrintTo(const OpenJpegCase& tested, std::ostream* out) { *out << tested.name; }
};

// These throw std::runtime_error for what the peer refuses.
std::vector<uint8_t> openJpegEncode(const OpenJpegCase& options);
// A real picture; of the case count the options, not the size.
std::vector<uint8_t> openJpegEncode(const OpenJpegCase& options, const codec::Picture& picture);
// A file of 1, 3 or 4 components of one size, of unsigned samples; so many layers of it, or all for 0. Throws for what
// the peer warns of, too.
codec::Picture openJpegDecode(codec::Bytes file, int layers = 0);
// The components of any file, at a lower resolution.
std::vector<codec::PgxPicture> openJpegComponents(codec::Bytes file, int reduce, int layers);

}
