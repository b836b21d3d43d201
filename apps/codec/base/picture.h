// SPDX-License-Identifier: Apache-2.0
// A finished picture: interleaved samples of 8 or 16 bits, as picture files and screens hold them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace qel::codec {

enum class ColourSpace { grey, rgb, cmyk };

// Channels of a colour space.
constexpr int channelsOf(ColourSpace space)
{
    return space == ColourSpace::grey ? 1 : space == ColourSpace::rgb ? 3 : 4;
}

// Alpha, where a picture has it, is its last channel: 0 is transparent and all ones are opaque. The colours are as they
// would be without it, not multiplied by it. CMYK pictures have none.
class Picture {
public:
    Picture() = default;
    // Samples are left unset. Throws CodecError, before memory is taken, for sizes below 1 or above kMaxBytes.
    Picture(int width, int height, ColourSpace space, int precision, bool hasAlpha = false);
    // Samples that lie elsewhere, row after row; they have to live on, and nothing is written to them.
    static Picture over(const void* samples, int width, int height, ColourSpace space, int precision);

    static constexpr uint64_t kMaxBytes = uint64_t(1) << 30;

    int width() const { return width_; }
    int height() const { return height_; }
    ColourSpace space() const { return space_; }
    bool hasAlpha() const { return hasAlpha_; }
    int channels() const { return channelsOf(space_) + hasAlpha_; }
    // Bits of a sample, 1 to 16: samples lie in 0 to 2^precision - 1, in bytes up to 8 bits, else in 16-bit words.
    int precision() const { return precision_; }
    // Whether the samples stand for numbers from -2^(precision - 1) on: they lie here as much above.
    bool isSigned() const { return isSigned_; }
    void setSigned(bool isSigned) { isSigned_ = isSigned; }
    int bytesPerSample() const { return precision_ <= 8 ? 1 : 2; }
    // Bytes from one row to the next.
    size_t step() const { return size_t(width_) * channels() * bytesPerSample(); }
    size_t sizeInBytes() const { return step() * height_; }

    // Row y, of uint8_t or uint16_t samples.
    template <class T = uint8_t> T* row(int y) { return reinterpret_cast<T*>(samples_.get() + step() * y); }
    template <class T = uint8_t> const T* row(int y) const
    {
        return reinterpret_cast<const T*>(samples_.get() + step() * y);
    }

private:
    struct Release {
        bool areElsewhere;
        void operator()(uint8_t* samples) const
        {
            if (!areElsewhere) delete[] samples;
        }
    };

    int width_ = 0, height_ = 0, precision_ = 8;
    ColourSpace space_ = ColourSpace::grey;
    bool hasAlpha_ = false, isSigned_ = false;
    std::unique_ptr<uint8_t[], Release> samples_;
};

}
