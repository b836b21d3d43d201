// SPDX-License-Identifier: Apache-2.0
// Sound scans do come apart: else they would be decoded twice, and the picture be right all the same.
#include <gtest/gtest.h>

#include "codec/base/parallel.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/decode/split_scan.h"
#include "codec/jpeg/encode/writer.h"
#include "codec/jpeg/markers.h"
#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::codec::jpeg;
using namespace qel::test;

constexpr int kThreads = 4;

Picture decodedAlone(Bytes file, const DecodeOptions& options)
{
    ThreadLimit limit(1);
    return decode(file, options).picture;
}

TEST(SplitScan, FallsIntoStep)
{
    ThreadLimit limit(kThreads);
    const EncodeOptions cases[] = {{},
                                   {.sampling = kSampling444, .optimiseTables = true},
                                   {.quality = 30, .sampling = kSampling422},
                                   {.target = Target::grey},
                                   {.restartRows = 1},
                                   {.sampling = kSampling444, .restartInterval = 77}};
    for (const EncodeOptions& options : cases) {
        SCOPED_TRACE(&options - cases);
        std::vector<uint8_t> file = encode(drawnPicture(2000, 1500, ColourSpace::rgb), options);
        Headers headers(file);
        ScanHeader header = *headers.nextScan(2);
        std::vector<QuantizerSteps> steps;
        for (const Component& component : headers.info().components) steps.push_back(headers.quantizer(component));

        ScanDecoder decoder(file, headers, header);
        DecodeOptions triangle;
        Picture one = decodedAlone(file, triangle), several(one.width(), one.height(), one.space(), 8);
        SplitScan scan(decoder, *endOfScan(file, header.dataAt) - header.dataAt,
                       RowStream::needsRowAbove(headers.info(), triangle), kThreads);
        EXPECT_TRUE(scan.isWorthwhile());
        EXPECT_TRUE(withThreads(kThreads, [&] {
            return scan.run(
                [&](int row) { return RowStream(headers.info(), steps, decoder.layout(), triangle, several, row); },
                [](size_t) {});
        }));
        EXPECT_EQ(scan.position(), *endOfScan(file, header.dataAt));
        expectSame(several, one);
    }
}

}
