// SPDX-License-Identifier: Apache-2.0
// OpenJPEG's transforms through its public calls. It offers no transform by itself: of a constant picture, whose
// coefficients are all zero, coding with 6 resolutions less coding with 1 is five levels of its wavelet, and coding
// with the component transform less coding without is that transform.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <vector>

#include <openjpeg.h>

#include "codec/base/picture.h"
#include "contest.h"

namespace qel::bench {

// How a picture is coded.
struct OpenJpegCoding {
    bool irreversible = false;
    int components = 1;
    int resolutions = 1;
    bool componentTransform = false;
};

// A constant picture of 8 bits, as one tile, and its file.
class OpenJpegPicture {
public:
    struct File {
        std::vector<uint8_t> bytes;
        size_t position = 0;
    };
    template <auto kFree> struct Free {
        template <class T> void operator()(T* object) const { kFree(object); }
    };
    using Image = std::unique_ptr<opj_image_t, Free<opj_image_destroy>>;
    using Codec = std::unique_ptr<opj_codec_t, Free<opj_destroy_codec>>;
    using Stream = std::unique_ptr<opj_stream_t, Free<opj_stream_destroy>>;
    // Of 8 bits and three components.
    static Image imageOf(const codec::Picture& picture);
    // Encoding consumes the image; `threads` work beside the calling one.
    static void encode(Image image, opj_cparameters_t parameters, File& file, int threads = 0);
    static Image decode(File& file, int threads = 0);

    OpenJpegPicture(int width, int height, OpenJpegCoding coding);

    void encode();
    void decode();

private:
    // A file in memory, from its beginning.
    static Stream stream(File& file, bool input);
    static Image makeImage(int width, int height, int components);

    int width_, height_;
    OpenJpegCoding coding_;
    File file_;
};

// What encoding or decoding a picture takes longer with `coding` than with `without`.
Contestant openJpegDifference(int width, int height, OpenJpegCoding coding, OpenJpegCoding without, bool decode);

}
