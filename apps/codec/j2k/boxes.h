// SPDX-License-Identifier: Apache-2.0
// The boxes of a JP2 file around its codestream (T.800 Annex I).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "codec/base/byte_writer.h"
#include "codec/base/bytes.h"

namespace qel::codec::j2k {

// COLR. Numbers of T.800 table I.10.
struct Jp2Colour {
    enum Method { kEnumerated = 1, kRestrictedProfile = 2, kAnyProfile = 3 };
    enum Space : uint32_t { kCmyk = 12, kSrgb = 16, kGrey = 17, kSycc = 18, kEsrgb = 20, kRommRgb = 21, kEsycc = 24 };

    int method = kEnumerated;
    uint32_t space = 0; // with kEnumerated
    Bytes profile;      // ICC profile, with the other methods
};
std::string nameOf(const Jp2Colour& colour);

// PCLR: columns of samples that a component chooses from.
struct Jp2Palette {
    struct Column {
        int precision = 8;
        bool isSigned = false;
    };
    int entries = 0;
    std::vector<Column> columns;
    std::vector<int32_t> values; // entry by entry

    int32_t value(int entry, size_t column) const { return values[size_t(entry) * columns.size() + column]; }
};

// CMAP: a channel is a component, or a column of the palette chosen by it.
struct Jp2Channel {
    int component = 0;
    std::optional<int> column;
};

// CDEF: what a channel means.
struct Jp2Definition {
    enum Kind { kColour = 0, kOpacity = 1, kPremultipliedOpacity = 2, kUnspecified = 65535 };
    static constexpr int kWholePicture = 0, kNothing = 65535;

    int channel = 0, kind = kUnspecified;
    int association = kNothing; // number of the colour, from 1
};

struct Jp2File {
    uint32_t width = 0, height = 0;
    int components = 0;
    std::vector<int> depths; // precision - 1, and 128 if signed: of each component, or of all, or not told
    std::vector<Jp2Colour> colours;
    std::optional<Jp2Palette> palette;
    std::vector<Jp2Channel> channels;       // where there is a palette
    std::vector<Jp2Definition> definitions; // empty where channels mean what the colour space says, in its order
    size_t codestreamBegin = 0, codestreamEnd = 0;
    Warnings warnings;
};

struct Box {
    uint32_t type = 0;
    size_t begin = 0, end = 0; // of its contents
    bool isCut = false;        // it says that it is longer than what it lies in
};

// The box at `at`, which lies before `end`. Throws CodecError where its header is cut off.
Box readBox(Bytes file, size_t at, size_t end);

// Writes a box with what `contents()` writes.
template <class Contents> void box(ByteWriter& out, uint32_t type, Contents contents)
{
    size_t begin = out.position();
    out.u32(0);
    out.u32(type);
    contents();
    out.setLength(begin, begin);
}

bool isJp2(Bytes file);

// Throws CodecError for a file without a codestream. Header boxes that are damaged are left out, with a warning.
Jp2File readJp2(Bytes file);

}
