// SPDX-License-Identifier: Apache-2.0
// Cutting and comparing JPEG files.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "codec/base/picture.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/markers.h"
#include "pictures.h"

namespace qel::test {

using File = std::vector<uint8_t>;

// Position of the n-th marker of a kind, or the size of the file.
inline size_t markerAt(const File& file, uint8_t code, int n = 0)
{
    size_t at = codec::jpeg::findMarker(file, 0);
    while (at < file.size() && (file[at + 1] != code || n-- > 0)) at = codec::jpeg::findMarker(file, at + 2);
    return at;
}

inline File without(File file, size_t from, size_t to)
{
    file.erase(file.begin() + from, file.begin() + to);
    return file;
}

inline File withoutSegments(File file, uint8_t code)
{
    for (size_t at; (at = markerAt(file, code)) < file.size();)
        file = without(file, at, codec::jpeg::readSegment(file, at).end);
    return file;
}

// Number of rows, from the top, that two pictures share.
inline int sameRows(const codec::Picture& a, const codec::Picture& b)
{
    int y = 0;
    while (y < a.height() && std::equal(a.row(y), a.row(y) + a.step(), b.row(y))) ++y;
    return y;
}

// However much of the file there is behind its first scan header, it gives a picture and a warning; the more, the more
// rows.
inline void expectCutsToBeDelivered(const File& file)
{
    codec::Picture whole = codec::jpeg::decode(file).picture;
    size_t data = markerAt(file, codec::jpeg::marker::kSos);
    int last = 0;
    for (size_t keep : {data + 14, (data + file.size()) / 2, file.size() - 40, file.size() - 2}) {
        codec::jpeg::Decoded cut = codec::jpeg::decode(codec::Bytes(file).first(keep));
        EXPECT_FALSE(cut.warnings.empty());
        int same = sameRows(cut.picture, whole);
        EXPECT_GE(same, last);
        last = same;
    }
    EXPECT_EQ(last, whole.height());
}

// The rows of the second restart interval are lost, and no others.
inline void expectSecondIntervalLost(const File& damaged, const codec::Picture& whole, int rows)
{
    codec::jpeg::Decoded decoded = codec::jpeg::decode(damaged);
    EXPECT_EQ(decoded.warnings.size(), 1u);
    for (int y = 0; y < whole.height(); ++y)
        EXPECT_EQ(std::equal(whole.row(y), whole.row(y) + whole.step(), decoded.picture.row(y)), y / rows != 1) << y;
}

// A byte of a sound file that is changed, what is said of the file then, and of which place.
struct Refusal {
    size_t at;
    uint8_t value;
    const char* message;
    size_t position;
};
inline void expectRefusals(const File& sound, const std::vector<Refusal>& table)
{
    for (const Refusal& row : table) {
        File file = sound;
        file[row.at] = row.value;
        EXPECT_EQ(errorOf([&] { codec::jpeg::decode(file); }),
                  row.message + (" (at byte " + std::to_string(row.position) + ")"));
    }
}

// The largest size in the frame header.
inline File hugeVersionOf(File file)
{
    size_t frame = codec::jpeg::findMarker(file, 0);
    while (!codec::jpeg::marker::isFrame(file[frame + 1])) frame = codec::jpeg::findMarker(file, frame + 2);
    for (size_t i = 5; i <= 8; ++i) file[frame + i] = 0xFF;
    return file;
}

}
