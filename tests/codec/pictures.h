// SPDX-License-Identifier: Apache-2.0
// Pictures for tests: random ones, what a writer produced, and whether two are the same.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "codec/base/bytes.h"
#include "codec/base/error.h"
#include "codec/base/picture.h"
#include "random.h"

namespace qel::test {

inline codec::Picture randomPicture(int width, int height, codec::ColourSpace space, int precision)
{
    codec::Picture picture(width, height, space, precision);
    Random random(unsigned(width + 1000 * precision));
    size_t samples = picture.sizeInBytes() / picture.bytesPerSample();
    for (size_t i = 0; i < samples; ++i) {
        int sample = random.between(0, (1 << precision) - 1);
        if (precision > 8)
            picture.row<uint16_t>(0)[i] = uint16_t(sample);
        else
            picture.row(0)[i] = uint8_t(sample);
    }
    return picture;
}

// Smooth shades, an edge and some noise, alike in all channels.
inline codec::Picture drawnPicture(int width, int height, codec::ColourSpace space, int precision)
{
    codec::Picture picture(width, height, space, precision);
    Random random(unsigned(width + 1000 * height));
    int largest = (1 << precision) - 1, channels = picture.channels();
    for (int i = 0; i < width * height * channels; ++i) {
        int x = i / channels % width, y = i / channels / width, c = i % channels;
        double shade = 0.5 + 0.2 * std::sin(0.05 * x + 0.3 * c) + 0.15 * std::cos(0.037 * y - 0.2 * c);
        if (std::hypot(x - width / 2, y - height / 2) < height / 3) shade += 0.12;
        int sample = std::clamp(int(largest * shade) + random.between(-largest / 64, largest / 64), 0, largest);
        if (precision > 8)
            picture.row<uint16_t>(0)[i] = uint16_t(sample);
        else
            picture.row(0)[i] = uint8_t(sample);
    }
    return picture;
}

inline void expectSame(const codec::Picture& a, const codec::Picture& b)
{
    ASSERT_EQ(a.width(), b.width());
    ASSERT_EQ(a.height(), b.height());
    ASSERT_EQ(a.space(), b.space());
    ASSERT_EQ(a.precision(), b.precision());
    EXPECT_EQ(std::memcmp(a.row(0), b.row(0), a.sizeInBytes()), 0);
}

// What `write(sink)` sends to the sink.
template <class Write> std::vector<uint8_t> written(Write write)
{
    std::vector<uint8_t> file;
    write([&](codec::Bytes bytes) { file.insert(file.end(), bytes.begin(), bytes.end()); });
    return file;
}

inline codec::Bytes bytesOf(const std::string& text)
{
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// The message of the CodecError that `step` throws; empty if it throws none.
template <class Step> std::string errorOf(Step step)
{
    try {
        step();
    } catch (const codec::CodecError& error) {
        return error.what();
    }
    return "";
}

}
