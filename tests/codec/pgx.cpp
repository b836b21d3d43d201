// SPDX-License-Identifier: Apache-2.0
// PGX: round trips, the forms of its header, damaged files.
#include "codec/formats/pgx.h"

#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

TEST(Pgx, RoundTrips)
{
    for (int precision : {1, 7, 8, 9, 12, 16, 17, 31})
        for (bool isSigned : {false, true}) {
            PgxPicture picture = {.width = 5, .height = 3, .precision = precision, .isSigned = isSigned, .samples = {}};
            int64_t low = isSigned ? -(int64_t(1) << (precision - 1)) : 0, high = low + (int64_t(1) << precision) - 1;
            Random random{unsigned(precision)};
            for (int i = 0; i < 13; ++i) picture.samples.push_back(random.between(int(low), int(high)));
            picture.samples.insert(picture.samples.end(), {int(low), int(high)});
            EXPECT_EQ(readPgx(written([&](auto sink) { writePgx(picture, sink); })), picture) << precision;
        }
}

TEST(Pgx, Forms)
{
    const struct {
        std::string file;
        int precision;
        bool isSigned;
        std::vector<int32_t> samples;
    } table[] = {
        {"PG ML + 8 2 1\nab", 8, false, {'a', 'b'}},
        {"PG ML +8 1 2\nab", 8, false, {'a', 'b'}},
        {"PG ML 8 2 1\r\nab", 8, false, {'a', 'b'}},
        {"PG  ML  -4  2  1\n\x07\xFC", 4, true, {7, -4}},
        {"PG LM -12 1 1\n\x34\xF8", 12, true, {-0x7CC}},
        {"PG ML - 12 1 1\n\xF8\x34", 12, true, {-0x7CC}},
        // Bits above the precision do not count.
        {"PG LM +17 1 1\n\x03\x02\x01\x80", 17, false, {0x10203}},
    };
    for (auto& row : table) {
        PgxPicture picture = readPgx(bytesOf(row.file));
        EXPECT_EQ(picture.precision, row.precision) << row.file;
        EXPECT_EQ(picture.isSigned, row.isSigned) << row.file;
        EXPECT_EQ(picture.samples, row.samples) << row.file;
    }
}

TEST(Pgx, Errors)
{
    const struct {
        std::string file, message;
    } table[] = {
        {"P5 1 1 255 a", "not a PGX picture (at byte 0)"},
        {"PG MM +8 1 1\na", "the order of bytes is neither ML nor LM (at byte 4)"},
        {"PG ML +32 1 1\nabcd", "the precision is not within 1 to 31 (at byte 7)"},
        {"PG ML +8 0 1\na", "the width is not within 1 to 268435456 (at byte 9)"},
        {"PG ML +8 1 -1\na", "the height is not within 1 to 268435456 (at byte 11)"},
        {"PG ML +8 1 99999999999999999999\na", "the height is not within 1 to 268435456 (at byte 11)"},
        {"PG ML +8 1 1", "the header does not end in a line break (at byte 12)"},
        {"PG ML +8 2 1\na", "the file is too short for its picture (at byte 14)"},
        {"PG ML +16 1 1\na", "the file is too short for its picture (at byte 15)"},
        {"PG ML +8 268435456 268435456\na", "the file is too short for its picture (at byte 30)"},
    };
    for (auto& row : table) EXPECT_EQ(errorOf([&] { readPgx(bytesOf(row.file)); }), row.message) << row.file;
}

}
