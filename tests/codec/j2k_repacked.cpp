// Packets written anew: code-blocks of an independent encoder, in other layers and orders, are what they were.
#include "codec/j2k_header_writer.h"
#include "codec/j2k_tile_writer.h"
#include "j2k_cases.h"
#include "j2k_reading.h"
#include "random.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

// The codeword segments as passes that end where segments do, with random slopes.
void fill(const J2kCodeBlock& from, int lastSlope, Random& random, J2kEncodedBlock& block)
{
    block.zeroBitPlanes = from.zeroBitPlanes;
    for (Bytes piece : from.data) block.data.insert(block.data.end(), piece.begin(), piece.end());
    int slope = random.between(lastSlope, lastSlope + 20);
    uint32_t end = 0;
    for (const J2kCodeSegment& segment : from.segments) {
        block.passes.resize(block.passes.size() + segment.passes - 1, {end, 0});
        block.passes.push_back({end += segment.length, 0});
        slope = std::max(lastSlope, slope - random.between(0, 10));
        block.truncations.push_back({int(block.passes.size()), slope});
    }
}

J2kEncodedTile encodedTile(const J2kTile& read, const J2kSize& size, const J2kParameters& parameters, int lastSlope)
{
    J2kEncodedTile tile = makeEncodedTile(size, parameters, read.index);
    Random random(7);
    for (size_t c = 0; c < read.components.size(); ++c)
        for (size_t r = 0; r < read.components[c].resolutions.size(); ++r)
            for (size_t p = 0; p < read.components[c].resolutions[r].precincts.size(); ++p) {
                auto& from = read.components[c].resolutions[r].precincts[p].bands;
                auto& to = tile.precincts[tile.firstPrecincts[c][r] + p].bands;
                for (size_t b = 0; b < from.size(); ++b)
                    for (size_t i = 0; i < from[b].blocks.size(); ++i)
                        fill(from[b].blocks[i], lastSlope, random, to[b].blocks[i]);
            }
    return tile;
}

class J2kRepacked : public testing::TestWithParam<OpenJpegCase> {};

TEST_P(J2kRepacked, HoldsTheSameCodeBlocks)
{
    std::vector<uint8_t> original = openJpegEncode(GetParam());
    ReadJ2k read(original);
    const J2kSize& size = read.file.codestream->size();
    J2kParameters parameters = read.file.codestream->parameters();
    const int lastSlope = -5;
    parameters.style->hasSop = parameters.style->hasEph = false;
    parameters.style->layers = 6;
    const J2kSlope layers[] = {20, 12, 12, 3, 0, lastSlope};
    for (int order = 0; order < 5; ++order) {
        parameters.style->order = J2kOrder(order);
        std::vector<uint8_t> file;
        ByteWriter out(file);
        writeJ2kMainHeader(out, size, parameters);
        for (const J2kTile& tile : read.tiles) {
            J2kEncodedTile encoded = encodedTile(tile, size, parameters, lastSlope);
            writeJ2kTile(size, parameters, layers, encoded, out);
        }
        writeJ2kEnd(out);
        ReadJ2k again(file);
        EXPECT_EQ(again.warnings, Warnings());
        EXPECT_TRUE(codedIn(again) == codedIn(read)) << nameOf(J2kOrder(order));
    }
}

std::vector<OpenJpegCase> casesWithoutRegions()
{
    std::vector<OpenJpegCase> cases = openJpegCases();
    std::erase_if(cases, [](const OpenJpegCase& tested) { return tested.roiShift != 0; });
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Cases, J2kRepacked, testing::ValuesIn(casesWithoutRegions()),
                         [](const auto& tested) { return tested.param.name; });

}
