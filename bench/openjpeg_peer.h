// OpenJPEG's wavelet through its public calls. It offers no transform by itself: of a constant picture, whose
// coefficients are all zero, coding with 6 resolutions less coding with 1 is five levels of its wavelet.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <vector>

#include <openjpeg.h>

namespace qel::bench {

// A constant picture of one component of 8 bits, as one tile, and its files with 6 resolutions and with 1.
class OpenJpegPicture {
public:
    OpenJpegPicture(int width, int height, bool irreversible);

    void encode(int resolutions);
    void decode(int resolutions);

private:
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

    File& file(int resolutions) { return files_[resolutions > 1]; }
    Image makeImage() const;
    static Stream stream(File& file, bool input);

    int width_, height_;
    bool irreversible_;
    File files_[2];
};

}
