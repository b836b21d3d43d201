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

// Sample i of all, in the order of the rows.
inline int sampleAt(const codec::Picture& picture, size_t i)
{
    return picture.bytesPerSample() == 1 ? picture.row(0)[i] : picture.row<uint16_t>(0)[i];
}
inline void setSample(codec::Picture& picture, size_t i, int sample)
{
    if (picture.bytesPerSample() == 1)
        picture.row(0)[i] = uint8_t(sample);
    else
        picture.row<uint16_t>(0)[i] = uint16_t(sample);
}

inline codec::Picture randomPicture(int width, int height, codec::ColourSpace space, int precision,
                                    bool hasAlpha = false)
{
    codec::Picture picture(width, height, space, precision, hasAlpha);
    Random random(unsigned(width + 1000 * precision));
    for (size_t i = 0; i < picture.sizeInBytes() / picture.bytesPerSample(); ++i)
        setSample(picture, i, random.between(0, (1 << precision) - 1));
    return picture;
}

// Flat parts, slopes, edges and noise.
inline codec::Picture drawnPicture(int width, int height, codec::ColourSpace space, int precision = 8,
                                   bool hasAlpha = false)
{
    codec::Picture picture(width, height, space, precision, hasAlpha);
    Random random(unsigned(width * 31 + height));
    int largest = (1 << precision) - 1, channels = picture.channels();
    for (int i = 0; i < width * height * channels; ++i) {
        int x = i / channels % width, y = i / channels / width, c = i % channels;
        double shade = 128 + 60 * std::sin(x * (0.05 + 0.02 * c)) + 50 * std::cos(y * 0.07 + c);
        if (x / 23 % 3 == 1) shade += y / 17 % 2 ? 70 : -40;
        if (y / 29 % 3 == 2) shade += random.between(-30, 30);
        setSample(picture, size_t(i), int(largest * std::clamp(shade / 255, 0.0, 1.0)));
    }
    return picture;
}

inline void expectSame(const codec::Picture& a, const codec::Picture& b)
{
    ASSERT_EQ(a.width(), b.width());
    ASSERT_EQ(a.height(), b.height());
    ASSERT_EQ(a.space(), b.space());
    ASSERT_EQ(a.hasAlpha(), b.hasAlpha());
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
