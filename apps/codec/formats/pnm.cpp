// SPDX-License-Identifier: Apache-2.0
// Portable anymap pictures: a scanner for the headers, and the samples in their plain and raw forms.
#include "codec/formats/pnm.h"

#include <algorithm>
#include <bit>
#include <string_view>
#include <vector>

#include "codec/base/convert.h"
#include "codec/base/error.h"

namespace qel::codec {
namespace {

constexpr uint32_t kLargestMaximum = 65535;

bool isSpace(uint8_t c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(uint8_t c) { return c >= '0' && c <= '9'; }

// Reads words and numbers between white space and comments.
class Scanner {
public:
    Scanner(Bytes file, size_t at) : file_(file), at_(at) {}

    size_t position() const { return at_; }
    Bytes rest() const { return file_.subspan(at_); }

    void skipSpace()
    {
        for (bool isComment = false; at_ < file_.size(); ++at_) {
            if (file_[at_] == '#') isComment = true;
            if (!isComment && !isSpace(file_[at_])) return;
            if (file_[at_] == '\n' || file_[at_] == '\r') isComment = false;
        }
    }

    // Raw samples follow the header after exactly one white space.
    void skipOneSpace()
    {
        if (at_ == file_.size() || !isSpace(file_[at_]))
            throw CodecError("the header does not end in white space", at_);
        ++at_;
    }

    std::string_view word()
    {
        skipSpace();
        size_t start = at_;
        while (at_ < file_.size() && !isSpace(file_[at_])) ++at_;
        return {reinterpret_cast<const char*>(file_.data()) + start, at_ - start};
    }

    // The number that comes next, from `smallest` to `largest`; `what` names it in errors.
    uint32_t number(const char* what, uint32_t smallest, uint32_t largest)
    {
        skipSpace();
        size_t start = at_;
        uint64_t value = 0;
        for (; at_ < file_.size() && isDigit(file_[at_]); ++at_)
            value = std::min<uint64_t>(10 * value + (file_[at_] - '0'), UINT32_MAX);
        if (at_ == file_.size() && at_ == start)
            throw CodecError("the file ends where " + std::string(what) + " should stand", at_);
        if (at_ == start) throw CodecError(std::string(what) + " is not a number", at_);
        if (value < smallest || value > largest)
            throw CodecError(std::string(what) + " is not within " + std::to_string(smallest) + " to " +
                                 std::to_string(largest),
                             start);
        return uint32_t(value);
    }

private:
    Bytes file_;
    size_t at_;
};

struct Header {
    uint32_t width = 0, height = 0, depth = 0, maximum = 0;
    ColourSpace space = ColourSpace::grey;
    bool hasAlpha = false, isPlain = false;

    int precision() const { return std::bit_width(maximum); }
    uint32_t channels() const { return uint32_t(channelsOf(space) + hasAlpha); }
    uint64_t samples() const { return uint64_t(width) * height * channels(); }
    Picture picture() const { return {int(width), int(height), space, precision(), hasAlpha}; }

    // Of a PAM picture; the depth can tell it as well. False for unknown ones.
    bool takeType(std::string_view type)
    {
        constexpr std::string_view kAlpha = "_ALPHA";
        if (type.empty()) type = depth == 1 ? "GRAYSCALE" : depth == 3 ? "RGB" : "";
        hasAlpha = type.ends_with(kAlpha);
        if (hasAlpha) type.remove_suffix(kAlpha.size());
        if (type == "RGB")
            space = ColourSpace::rgb;
        else if (type == "CMYK" && !hasAlpha)
            space = ColourSpace::cmyk;
        else
            return type == "GRAYSCALE" || type == "BLACKANDWHITE";
        return true;
    }

    // Stated maximum to all ones, to nearest.
    uint16_t scaled(uint32_t sample) const
    {
        uint32_t ones = (1u << precision()) - 1;
        return uint16_t(ones == maximum ? sample : rescaled(sample, maximum, ones));
    }
};

void readSize(Scanner& in, Header& header)
{
    header.width = in.number("the width", 1, INT32_MAX);
    header.height = in.number("the height", 1, INT32_MAX);
}

// The rest of a PGM or PPM header.
Header readHeader(Scanner& in, ColourSpace space, bool isPlain)
{
    Header header;
    header.space = space;
    header.isPlain = isPlain;
    readSize(in, header);
    header.maximum = in.number("the largest sample value", 1, kLargestMaximum);
    if (!isPlain) in.skipOneSpace();
    return header;
}

// The rest of a PAM header: a keyword and its value on each line.
Header readPamHeader(Scanner& in)
{
    Header header;
    std::string_view type;
    size_t typePosition = in.position();
    for (std::string_view key = in.word(); key != "ENDHDR"; key = in.word()) {
        if (key == "WIDTH")
            header.width = in.number("the width", 1, INT32_MAX);
        else if (key == "HEIGHT")
            header.height = in.number("the height", 1, INT32_MAX);
        else if (key == "DEPTH")
            header.depth = in.number("the depth", 1, INT32_MAX);
        else if (key == "MAXVAL")
            header.maximum = in.number("the largest sample value", 1, kLargestMaximum);
        else if (key == "TUPLTYPE")
            type = in.word(), typePosition = in.position() - type.size();
        else if (key.empty())
            throw CodecError("the file ends within its header", in.position());
        else
            throw CodecError("unknown word in the header", in.position() - key.size());
    }
    in.skipOneSpace();
    if (!header.width || !header.height || !header.depth || !header.maximum)
        throw CodecError("the header lacks the width, height, depth or largest sample value", in.position());
    if (!header.takeType(type))
        throw CodecError("only pictures of type GRAYSCALE, RGB, these with _ALPHA, and CMYK are supported",
                         typePosition);
    if (header.depth != header.channels())
        throw CodecError("the depth does not suit the type of picture", typePosition);
    return header;
}

Header readHeader(Scanner& in, uint8_t kind)
{
    switch (kind) {
    case '2':
        return readHeader(in, ColourSpace::grey, true);
    case '3':
        return readHeader(in, ColourSpace::rgb, true);
    case '5':
        return readHeader(in, ColourSpace::grey, false);
    case '6':
        return readHeader(in, ColourSpace::rgb, false);
    case '7':
        return readPamHeader(in);
    default:
        throw CodecError("bitmaps (PBM) are not supported", 0);
    }
}

[[noreturn]] void refuseSample(size_t position)
{
    throw CodecError("a sample is above the stated largest value", position);
}

template <class T> Picture readPlain(Scanner& in, const Header& header)
{
    // White space and a digit each, at least.
    if (in.rest().size() / 2 < header.samples())
        throw CodecError("the file is too short for its picture", in.position() + in.rest().size());
    Picture picture = header.picture();
    T* samples = picture.row<T>(0);
    for (uint64_t i = 0; i < header.samples(); ++i)
        samples[i] = T(header.scaled(in.number("a sample", 0, header.maximum)));
    return picture;
}

Picture readRaw8(Scanner& in, const Header& header)
{
    Picture picture = header.picture();
    const uint8_t* src = in.rest().data();
    uint8_t* dst = picture.row(0);
    for (size_t i = 0; i < header.samples(); ++i) {
        if (src[i] > header.maximum) refuseSample(in.position() + i);
        dst[i] = uint8_t(header.scaled(src[i]));
    }
    return picture;
}

Picture readRaw16(Scanner& in, const Header& header)
{
    Picture picture = header.picture();
    const uint8_t* src = in.rest().data();
    auto* dst = picture.row<uint16_t>(0);
    for (size_t i = 0; i < header.samples(); ++i) {
        uint32_t sample = src[2 * i] << 8 | src[2 * i + 1];
        if (sample > header.maximum) refuseSample(in.position() + 2 * i);
        dst[i] = header.scaled(sample);
    }
    return picture;
}

Picture readRaw(Scanner& in, const Header& header)
{
    bool isWide = header.maximum > 255;
    if (in.rest().size() / (isWide ? 2 : 1) < header.samples())
        throw CodecError("the file is too short for its picture", in.position() + in.rest().size());
    return isWide ? readRaw16(in, header) : readRaw8(in, header);
}

void put(const ByteSink& sink, const std::string& text)
{
    sink({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

void writeSamples(const Picture& picture, const ByteSink& sink)
{
    if (picture.bytesPerSample() == 1) return sink({picture.row(0), picture.sizeInBytes()});
    std::vector<uint8_t> row(picture.step());
    for (int y = 0; y < picture.height(); ++y) {
        auto* src = picture.row<uint16_t>(y);
        for (size_t i = 0; i < row.size() / 2; ++i) {
            row[2 * i] = uint8_t(src[i] >> 8);
            row[2 * i + 1] = uint8_t(src[i]);
        }
        sink(row);
    }
}

std::string maximumOf(const Picture& picture) { return std::to_string((1 << picture.precision()) - 1); }

}

bool isPnm(Bytes file)
{
    return file.size() >= 3 && file[0] == 'P' && file[1] >= '1' && file[1] <= '7' &&
           (isSpace(file[2]) || file[2] == '#');
}

Picture readPnm(Bytes file)
{
    if (!isPnm(file)) throw CodecError("not a PGM, PPM or PAM picture", 0);
    Scanner in(file, 2);
    Header header = readHeader(in, file[1]);
    if (!header.isPlain) return readRaw(in, header);
    return header.maximum > 255 ? readPlain<uint16_t>(in, header) : readPlain<uint8_t>(in, header);
}

void writePnm(const Picture& picture, const ByteSink& sink)
{
    if (picture.space() == ColourSpace::cmyk || picture.hasAlpha()) return writePam(picture, sink);
    put(sink, std::string(picture.space() == ColourSpace::grey ? "P5\n" : "P6\n") + std::to_string(picture.width()) +
                  ' ' + std::to_string(picture.height()) + '\n' + maximumOf(picture) + '\n');
    writeSamples(picture, sink);
}

void writePam(const Picture& picture, const ByteSink& sink)
{
    const char* types[] = {"GRAYSCALE", "RGB", "CMYK"};
    put(sink, "P7\nWIDTH " + std::to_string(picture.width()) + "\nHEIGHT " + std::to_string(picture.height()) +
                  "\nDEPTH " + std::to_string(picture.channels()) + "\nMAXVAL " + maximumOf(picture) + "\nTUPLTYPE " +
                  types[int(picture.space())] + (picture.hasAlpha() ? "_ALPHA" : "") + "\nENDHDR\n");
    writeSamples(picture, sink);
}

}
