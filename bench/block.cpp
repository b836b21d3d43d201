// SPDX-License-Identifier: Apache-2.0
// Level shift, DCT and quantization of blocks, beside libjpeg-turbo. Its DCT cannot be called alone: the time of its
// entropy coding of the same coefficients is taken off that of coding samples. For the forward transform this is done
// on a flat picture, whose entropy coding is next to nothing; the transform and the quantization have no branches that
// depend on the data.
#include "jpeg/block/dct.h"

#include <stdlib.h>

#include <algorithm>
#include <memory>

#include <turbojpeg.h>

#include "buffers.h"
#include "cases.h"
#include "contest.h"
#include "libjpeg.h"
#include "qeljx/jpeg_block.h"
#include "samples.h"

namespace qel::bench {
namespace {

// A plane that fits the L2 cache with its coefficients.
constexpr int kWidth = 400, kHeight = 296, kBlocks = kWidth / 8 * (kHeight / 8);

// Grey samples, their coefficients, and the tables for both ways.
struct Blocks {
    Blocks(const codec::Picture& grey, int quality) : coded(grey, quality, TJSAMP_GRAY), samples(kWidth * kHeight)
    {
        for (int i = 0; i < kWidth * kHeight; ++i) samples[i] = grey.row(0)[3 * i];
        for (int i = 0; i < 64; ++i) {
            inverse[i] = coded.quantizers[i];
            forward[i] = uint16_t((32768 + inverse[i] / 2) / inverse[i]);
        }
        result.resize(coded.blocks.size());
    }
    JpegCoefficients coded;
    std::vector<uint8_t> samples;
    std::vector<int16_t> result;
    uint16_t forward[64], inverse[64];
    JpegSampleWriter writer;
};

using Source = std::shared_ptr<Blocks>;
using Work = void (*)(Blocks&);

// body(samples, block) for each block, rows of samples kWidth apart.
template <class Body> void forBlocks(Blocks& b, std::vector<int16_t>& blocks, Body body)
{
    int16_t* block = blocks.data();
    for (int y = 0; y < kHeight; y += 8)
        for (int x = 0; x < kWidth; x += 8, block += 64) body(&b.samples[y * kWidth + x], block);
}

void forward(Blocks& b)
{
    forBlocks(b, b.result, [&](const uint8_t* samples, int16_t* block) {
        succeed(qeliDCTQuantFwd8x8LS_JPEG_8u16s_C1R(samples, kWidth, block, b.forward));
    });
}

void inverse(Blocks& b)
{
    forBlocks(b, b.coded.blocks, [&](uint8_t* samples, const int16_t* block) {
        succeed(qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R(block, samples, kWidth, b.inverse));
    });
}

// The other block functions, on coefficients.
void forwardInPlace(Blocks& b)
{
    forBlocks(b, b.result, [&](auto, int16_t* block) { succeed(qeliDCTQuantFwd8x8_JPEG_16s_C1I(block, b.forward)); });
}
void inverseInPlace(Blocks& b)
{
    forBlocks(b, b.result, [&](auto, int16_t* block) { succeed(qeliDCTQuantInv8x8_JPEG_16s_C1I(block, b.inverse)); });
}
void quantize(Blocks& b)
{
    forBlocks(b, b.result, [&](auto, int16_t* block) { succeed(qeliQuantFwd8x8_JPEG_16s_C1I(block, b.forward)); });
}
void dequantize(Blocks& b)
{
    forBlocks(b, b.result, [&](auto, int16_t* block) { succeed(qeliQuantInv8x8_JPEG_16s_C1I(block, b.inverse)); });
}

void checkForward(Blocks& b)
{
    forward(b);
    for (size_t i = 0; i < b.result.size(); ++i)
        require(abs(b.result[i] - b.coded.blocks[i]) <= 1, "the coefficients differ from the peer's");
}

void checkInverse(Blocks& b)
{
    inverse(b);
    std::vector<uint8_t> theirs(b.samples.size());
    b.coded.readSamples(theirs.data(), kWidth);
    for (size_t i = 0; i < theirs.size(); ++i)
        require(abs(b.samples[i] - theirs[i]) <= 2, "the samples differ from the peer's");
}

codec::Picture flat()
{
    codec::Picture picture(kWidth, kHeight, codec::ColourSpace::rgb, 8);
    std::fill_n(picture.row(0), picture.sizeInBytes(), uint8_t(100));
    return picture;
}

void addForwardBuilds(Contest& contest, const Source& source)
{
    forBuilds<DctKernels>([&](std::string name, auto& build) {
        contest.contestants.push_back({name, [source, kernel = build.forwardQuantSamples] {
                                           forBlocks(*source, source->result,
                                                     [&](const uint8_t* samples, int16_t* block) {
                                                         kernel(samples, kWidth, block, source->forward);
                                                     });
                                       }});
    });
}

void addInverseBuilds(Contest& contest, const Source& source)
{
    forBuilds<DctKernels>([&](std::string name, auto& build) {
        contest.contestants.push_back({name, [source, kernel = build.inverseQuantSamples] {
                                           forBlocks(*source, source->coded.blocks,
                                                     [&](uint8_t* samples, const int16_t* block) {
                                                         kernel(block, samples, kWidth, source->inverse);
                                                     });
                                       }});
    });
}

Contest forwardContest(const Source& source, int quality)
{
    auto plain = std::make_shared<Blocks>(flat(), quality);
    auto encode = [=] { plain->writer.write(plain->samples.data(), kWidth, kWidth, kHeight, quality); };
    Contest contest = {"block", kBlocks, {{kLibrary, [=] { forward(*source); }}}};
    addForwardBuilds(contest, source);
    contest.contestants.push_back({"libjpeg-turbo", encode, [=] { plain->coded.write(false); }});
    contest.check = [=] { checkForward(*source); };
    return contest;
}

Contest inverseContest(const Source& source)
{
    auto theirs = std::make_shared<std::vector<uint8_t>>(kWidth * kHeight);
    auto decode = [=] { source->coded.readSamples(theirs->data(), kWidth); };
    Contest contest = {"block", kBlocks, {{kLibrary, [=] { inverse(*source); }}}};
    addInverseBuilds(contest, source);
    contest.contestants.push_back({"libjpeg-turbo", decode, [=] { source->coded.read(); }});
    contest.check = [=] { checkInverse(*source); };
    return contest;
}

void addForward(const NamedPicture& named, int quality)
{
    addCase("block/forward/" + named.name + " q" + std::to_string(quality), [&named, quality] {
        return forwardContest(std::make_shared<Blocks>(greyOf(named.picture, kWidth, kHeight), quality), quality);
    });
}

void addInverse(const NamedPicture& named, int quality)
{
    addCase("block/inverse/" + named.name + " q" + std::to_string(quality), [&named, quality] {
        return inverseContest(std::make_shared<Blocks>(greyOf(named.picture, kWidth, kHeight), quality));
    });
}

void addAlone(const std::string& name, Work work)
{
    addCase("block/" + name + "/noise q90", [=] {
        auto source = std::make_shared<Blocks>(greyOf(noise().picture, kWidth, kHeight), 90);
        return Contest{"block", kBlocks, {{kLibrary, [=] { work(*source); }}}};
    });
}

}

void addBlockCases()
{
    for (auto& named : pictures()) addForward(named, 90);
    addForward(noise(), 90);
    for (auto& named : pictures())
        for (int quality : {75, 90, 95}) addInverse(named, quality);
    addInverse(noise(), 90);
    addCase("block/inverse/DC only", [] {
        return inverseContest(std::make_shared<Blocks>(mosaicOf(pictures()[0].picture, kWidth, kHeight), 90));
    });
    addAlone("forward of coefficients", forwardInPlace);
    addAlone("inverse to coefficients", inverseInPlace);
    addAlone("quantization", quantize);
    addAlone("dequantization", dequantize);
}

}
