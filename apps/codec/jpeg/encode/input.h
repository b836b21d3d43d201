// SPDX-License-Identifier: Apache-2.0
// From the picture to components: colour conversion and down-sampling, a row of MCUs at a time.
#pragma once

#include <vector>

#include "codec/base/picture.h"
#include "codec/base/plane.h"
#include "codec/jpeg/info.h"

namespace qel::codec::jpeg {

class StripReader {
public:
    // `info` describes the components to be made; sampling factors are 1 or 2.
    StripReader(const Info& info, const Picture& picture);

    // Fills the strips with the rows of samples of one row of MCUs. Edges are repeated up to whole MCUs.
    void load(int mcuRow);

    // Rows of component i in the row of MCUs that was loaded last, from row 0.
    const Plane& strip(int i) const { return components_[i].strip; }

private:
    enum class Filter { none, boxH2V1, boxH2V2, boxH1V2 };
    struct Strip {
        Filter filter;
        int v;
        Plane strip;
        Plane full; // two rows before down-sampling
    };
    uint8_t* rowToFill(Strip& component, int y);
    void convert(int y, uint8_t* const rows[]) const;
    void sampleDown(Strip& component, int y);

    const Picture& picture_;
    Colour colour_;
    int maxV_, paddedWidth_;
    std::vector<Strip> components_;
};

}
