// SPDX-License-Identifier: Apache-2.0
// From components to the picture: up-sampling and colour conversion, row by row.
#pragma once

#include <vector>

#include "codec/base/picture.h"
#include "codec/base/plane.h"
#include "codec/jpeg/decode/options.h"
#include "codec/jpeg/info.h"

namespace qel::codec::jpeg {

// The lines from `first` on become grey.
void fillGrey(Picture& picture, int first);

class RowWriter {
public:
    // `planes` has one plane for each component and must outlive this object, as must `picture`. Writing begins with
    // row `first` of the picture.
    RowWriter(const Info& info, Upsampling upsampling, const std::vector<Plane>& planes, Picture& picture,
              int first = 0);

    // Writes rows of the picture up to, not including, `end`. The planes must hold the rows of samples that these are
    // made of, one more above and below where chroma is interpolated between rows.
    void writeUntil(int end);
    // The rows that are left become grey.
    void fillRest();

private:
    enum class Filter { none, triangleH2V1, triangleH2V2, triangleH1V2, replicate };
    struct Source {
        const Plane* plane;
        Filter filter;
        int h, v;                 // sampling factors
        int width, height;        // samples
        std::vector<uint8_t> row; // after up-sampling
    };
    Filter filterFor(const Component& component, Upsampling upsampling) const;
    const uint8_t* fullRow(Source& source, int y) const;
    void replicate(Source& source, int y) const;
    void convert(const uint8_t* const rows[], uint8_t* out) const;

    Colour colour_;
    int maxH_, maxV_;
    std::vector<Source> sources_;
    Picture& picture_;
    int next_;
};

// Rows of samples behind the decoded ones of each component become grey: all of them, or those of the part of the
// picture that any component reaches. Returns the number of rows of the picture in that part.
int fillGaps(const Info& info, const std::vector<int>& decodedRows, bool all, std::vector<Plane>& planes);

}
