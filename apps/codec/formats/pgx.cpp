// SPDX-License-Identifier: Apache-2.0
// Reading and writing of PGX files.
#include "codec/formats/pgx.h"

#include <algorithm>
#include <string>

#include "codec/base/fields.h"

namespace qel::codec {

namespace {

constexpr int kMaxPrecision = 31;
constexpr int64_t kMaxSamples = int64_t(1) << 28;

constexpr size_t bytesOf(int precision) { return precision <= 8 ? 1 : precision <= 16 ? 2 : 4; }

// "PG", the order of bytes, the sign, precision, width and height: between them white space, or none.
class Header {
public:
    explicit Header(Bytes file) : file_(file) {}

    size_t position() const { return at_; }
    void skipSpace()
    {
        while (at_ < file_.size() && (file_[at_] == ' ' || file_[at_] == '\t')) ++at_;
    }
    bool take(char expected)
    {
        skipSpace();
        if (at_ == file_.size() || file_[at_] != expected) return false;
        ++at_;
        return true;
    }
    int64_t number(const char* what, int64_t largest)
    {
        skipSpace();
        size_t start = at_;
        int64_t value = 0;
        for (; at_ < file_.size() && file_[at_] >= '0' && file_[at_] <= '9' && value <= largest; ++at_)
            value = 10 * value + (file_[at_] - '0');
        if (value < 1 || value > largest)
            throw CodecError(std::string(what) + " is not within 1 to " + std::to_string(largest), start);
        return value;
    }

private:
    Bytes file_;
    size_t at_ = 2;
};

// A sample in the `count` bytes at `at`; what is above its precision is left out.
int32_t sample(const uint8_t* at, size_t count, bool lowFirst, const PgxPicture& picture)
{
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i) value = value << 8 | at[lowFirst ? count - 1 - i : i];
    int unused = 32 - picture.precision;
    value <<= unused;
    return picture.isSigned ? int32_t(value) >> unused : int32_t(value >> unused);
}

}

bool isPgx(Bytes file)
{
    return file.size() >= 3 && file[0] == 'P' && file[1] == 'G' && (file[2] == ' ' || file[2] == '\t');
}

PgxPicture readPgx(Bytes file)
{
    if (!isPgx(file)) throw CodecError("not a PGX picture", 0);
    Header header(file);
    PgxPicture picture;
    bool lowFirst = header.take('L');
    if (!header.take('M') || (!lowFirst && !header.take('L')))
        throw CodecError("the order of bytes is neither ML nor LM", header.position());
    picture.isSigned = header.take('-');
    if (!picture.isSigned) header.take('+');
    picture.precision = int(header.number("the precision", kMaxPrecision));
    picture.width = int(header.number("the width", kMaxSamples));
    picture.height = int(header.number("the height", kMaxSamples));
    header.take('\r');
    if (!header.take('\n')) throw CodecError("the header does not end in a line break", header.position());

    Bytes samples = file.subspan(header.position());
    uint64_t count = uint64_t(picture.width) * uint64_t(picture.height);
    size_t width = bytesOf(picture.precision);
    if (samples.size() / width < count) throw CodecError("the file is too short for its picture", file.size());
    picture.samples.resize(size_t(count));
    for (size_t i = 0; i < count; ++i) picture.samples[i] = sample(&samples[width * i], width, lowFirst, picture);
    return picture;
}

void writePgx(const PgxPicture& picture, const ByteSink& sink)
{
    std::string header = std::string("PG ML ") + (picture.isSigned ? "-" : "+") + std::to_string(picture.precision) +
                         ' ' + std::to_string(picture.width) + ' ' + std::to_string(picture.height) + '\n';
    sink({reinterpret_cast<const uint8_t*>(header.data()), header.size()});
    size_t width = bytesOf(picture.precision);
    std::vector<uint8_t> row(width * size_t(picture.width));
    for (size_t y = 0; y < size_t(picture.height); ++y) {
        for (size_t i = 0; i < row.size(); ++i) {
            int32_t value = picture.samples[y * size_t(picture.width) + i / width];
            row[i] = uint8_t(value >> 8 * (width - 1 - i % width));
        }
        sink(row);
    }
}

}
