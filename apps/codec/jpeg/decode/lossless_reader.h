// SPDX-License-Identifier: Apache-2.0
// From the differences of lossless scans to samples, and from these to the picture (T.81 Annex H).
#pragma once

#include <array>
#include <vector>

#include "codec/base/picture.h"
#include "codec/base/plane.h"
#include "codec/jpeg/decode/options.h"
#include "codec/jpeg/decode/scan.h"
#include "codec/jpeg/info.h"

namespace qel::codec::jpeg {

// Where samples go, row after row of each component: to their places in the picture, or to planes where these are still
// to be up-sampled or to be converted to other colours.
class LosslessOutput {
public:
    // Throws CodecError for what cannot be converted. `picture` must outlive this object.
    LosslessOutput(const Info& info, Picture& picture);

    static bool needsPlanes(const Info& info);

    // The next row of a component; `pointTransform` bits are put back.
    void put(int component, const int16_t* samples, int pointTransform);
    // Whether the picture is one of three components, none of them up-sampled or converted.
    bool takesColours() const { return planes_.empty() && picture_.channels() == 3; }
    // The same for all three components of such a picture at once, which stores it in one pass.
    void putColours(std::array<const int16_t*, 3> samples, int pointTransform);
    // All rows that there are have been put: the others become grey.
    void finish(Upsampling upsampling);

private:
    void fillRest(int component);

    const Info& info_;
    Picture& picture_;
    std::vector<Plane> planes_; // empty if none are needed
    std::vector<int> rows_;     // that each component has got
};

// The rows of one scan.
class LosslessRows {
public:
    // `restartInterval` is that of the scan. Throws CodecError unless it is a number of whole rows.
    LosslessRows(const Info& info, const ScanDecoder& coder, int restartInterval, LosslessOutput& output);

    // Decodes the next row of MCUs. What is lost of it becomes grey or, in the row where the damage is, what prediction
    // alone gives.
    void decode(ScanDecoder& coder);

private:
    struct Component {
        int index, width, down;       // in the frame; samples in whole MCUs; rows of an MCU
        int rowsLeft;                 // that the component itself still needs
        std::vector<int16_t> samples; // the row above, then the rows of an MCU

        int16_t* row(int dy) { return samples.data() + size_t(dy + 1) * width; }
    };
    void restore(Component& component, int dy, bool isFirst) const;

    int precision_, predictor_, pointTransform_;
    int rowsPerInterval_, row_ = 0;
    LosslessOutput& output_;
    bool putsColours_; // one row of all of them at a time
    std::vector<Component> components_;
    std::vector<ScanDecoder::DifferenceRow> places_;
};

}
