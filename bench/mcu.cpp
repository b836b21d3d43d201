// SPDX-License-Identifier: Apache-2.0
// Conversion of MCUs between blocks and pixels, beside the library's own planes and libjpeg-turbo's planes. Blocks of
// one row of MCUs serve for all rows, as in a decoder that keeps no more of them. The peer's planes need no level
// shift.
#include "jpeg/colour/mcu.h"

#include <stdlib.h>

#include <memory>

#include <turbojpeg.h>

#include "buffers.h"
#include "cases.h"
#include "contest.h"
#include "qeljx/jpeg_colour.h"
#include "qeljx/jpeg_mcu.h"
#include "qeljx/jpeg_sampling.h"

namespace qel::bench {
namespace {

struct Size {
    const char* name;
    int width, height;
};
constexpr Size kSizes[] = {{"L2", 1200, 96}, {"memory", 5008, 3008}};

using Decoder = BlocksToBytes;
using Encoder = BytesToBlocks;

struct Sampling {
    const char* name;
    int h, v, theirs;
    QelStatus (*decode)(const int16_t* const*, uint8_t*, int);
    QelStatus (*encode)(const uint8_t*, int, int16_t* const*);
    Decoder* BySampling<Decoder>::*decoder;
    Encoder* BySampling<Encoder>::*encoder;
};

const Sampling kSamplings[] = {
    {"444", 1, 1, TJSAMP_444, qeliYCbCr444ToRGBLS_MCU_16s8u_P3C3R, qeliRGBToYCbCr444LS_MCU_8u16s_C3P3R,
     &BySampling<Decoder>::s444, &BySampling<Encoder>::s444},
    {"422", 2, 1, TJSAMP_422, qeliYCbCr422ToRGBLS_MCU_16s8u_P3C3R, qeliRGBToYCbCr422LS_MCU_8u16s_C3P3R,
     &BySampling<Decoder>::s422, &BySampling<Encoder>::s422},
    {"411", 2, 2, TJSAMP_420, qeliYCbCr411ToRGBLS_MCU_16s8u_P3C3R, qeliRGBToYCbCr411LS_MCU_8u16s_C3P3R,
     &BySampling<Decoder>::s411, &BySampling<Encoder>::s411},
};

// A picture with equal rows of MCUs: its pixels, the blocks of one row, and planes of both sizes with a margin that the
// up-sampling reads.
struct Picture {
    static constexpr int kMargin = 16;
    Sampling sampling;
    int width, height, planeStep = width + 2 * kMargin;
    int mcus = width / (8 * sampling.h), mcuRows = height / (8 * sampling.v);
    int smallWidth = width / sampling.h, smallHeight = height / sampling.v;
    Memory pixels{3 * size_t(width) * height}, decoded{3 * size_t(width) * height},
        planes[3] = {plane(), plane(), plane()}, small[3] = {plane(), plane(), plane()};
    std::vector<int16_t> blocks[3];
    std::unique_ptr<void, int (*)(void*)> compressor{tjInitCompress(), tjDestroy},
        decompressor{tjInitDecompress(), tjDestroy};

    Memory plane() const { return Memory(size_t(planeStep) * height); }
    Picture(const Sampling& chosen, const Size& size) : sampling(chosen), width(size.width), height(size.height)
    {
        require(compressor && decompressor, "libjpeg-turbo has no memory");
        size_t period = size_t(3) * width * 8 * sampling.v;
        for (size_t i = period; i < size_t(3) * width * height; ++i) pixels.data()[i] = pixels.data()[i - period];
        for (int c = 0; c < 3; ++c) blocks[c].resize(64 * mcus * (c == 0 ? sampling.h * sampling.v : 1));
        encode([&](auto src, int step, auto dst) { succeed(sampling.encode(src, step, dst)); });
        theirEncode();
    }
    uint8_t* at(Memory& memory) { return memory.data() + kMargin; }

    // body(tile, step, blocks) for each MCU.
    template <class Body> void forMcus(uint8_t* first, Body body)
    {
        int h = sampling.h, v = sampling.v;
        for (int y = 0; y < mcuRows; ++y)
            for (int x = 0; x < mcus; ++x) {
                int16_t* mcu[] = {&blocks[0][64 * h * v * x], &blocks[1][64 * x], &blocks[2][64 * x]};
                body(first + 3 * (size_t(width) * 8 * v * y + 8 * h * x), 3 * width, mcu);
            }
    }
    template <class Convert> void decode(Convert convert)
    {
        forMcus(decoded.data(), [=](uint8_t* tile, int step, int16_t* const* mcu) { convert(mcu, tile, step); });
    }
    template <class Convert> void encode(Convert convert)
    {
        forMcus(pixels.data(), [=](const uint8_t* tile, int step, int16_t* const* mcu) { convert(tile, step, mcu); });
    }

    void decodeByPlanes()
    {
        auto up = sampling.v == 1 ? qeliSampleUpH2V1_JPEG_8u_C1R : qeliSampleUpH2V2_JPEG_8u_C1R;
        for (int c = 1; c < 3 && sampling.h == 2; ++c)
            succeed(up(at(small[c]), planeStep, {smallWidth, smallHeight}, at(planes[c]), planeStep, {width, height}));
        const uint8_t* src[] = {at(planes[0]), at(planes[1]), at(planes[2])};
        succeed(qeliYCbCrToRGB_JPEG_8u_P3C3R(src, planeStep, decoded.data(), 3 * width, {width, height}));
    }
    void encodeByPlanes()
    {
        uint8_t* dst[] = {at(planes[0]), at(planes[1]), at(planes[2])};
        succeed(qeliRGBToYCbCr_JPEG_8u_C3P3R(pixels.data(), 3 * width, dst, planeStep, {width, height}));
        auto down = sampling.v == 1 ? qeliSampleDownH2V1_JPEG_8u_C1R : qeliSampleDownH2V2_JPEG_8u_C1R;
        for (int c = 1; c < 3 && sampling.h == 2; ++c)
            succeed(
                down(at(planes[c]), planeStep, {width, height}, at(small[c]), planeStep, {smallWidth, smallHeight}));
    }

    void theirEncode()
    {
        uint8_t* dst[] = {at(planes[0]), at(small[1]), at(small[2])};
        int steps[] = {planeStep, planeStep, planeStep};
        int bad = tjEncodeYUVPlanes(compressor.get(), pixels.data(), width, 3 * width, height, TJPF_RGB, dst, steps,
                                    sampling.theirs, TJFLAG_ACCURATEDCT);
        require(!bad, "tjEncodeYUVPlanes failed");
    }
    // Chroma is repeated, not interpolated.
    void theirDecode()
    {
        const uint8_t* src[] = {at(planes[0]), at(small[1]), at(small[2])};
        int steps[] = {planeStep, planeStep, planeStep};
        int bad = tjDecodeYUVPlanes(decompressor.get(), src, steps, sampling.theirs, decoded.data(), width, 3 * width,
                                    height, TJPF_RGB, TJFLAG_FASTUPSAMPLE);
        require(!bad, "tjDecodeYUVPlanes failed");
    }
};

using Shared = std::shared_ptr<Picture>;

// Our pixels from our blocks and the peer's from its planes differ by the rounding of both ways.
void compare(Picture& p)
{
    p.decode([&](auto src, uint8_t* dst, int step) { succeed(p.sampling.decode(src, dst, step)); });
    std::vector<uint8_t> ours(p.decoded.data(), p.decoded.data() + size_t(3) * p.width * p.height);
    p.theirEncode();
    p.theirDecode();
    for (size_t i = 0; i < ours.size(); ++i)
        require(abs(ours[i] - p.decoded.data()[i]) <= 4, "the peer's pixels are not the library's");
}

// The kernel of each build through run(kernel), beside the same work by planes.
template <class KernelOf, class Run>
Contest contestOf(const Shared& p, KernelOf kernelOf, Run run, void (Picture::*planes)(), void (Picture::*theirs)())
{
    Contest contest = {"pixel", double(p->width) * p->height, {}};
    auto add = [&](std::string name, std::function<void()> work) { contest.contestants.push_back({name, work}); };
    add(kLibrary, [=] { run(nullptr); });
    forBuilds<McuKernels>([&](std::string name, auto& build) { add(name, [=, k = kernelOf(build)] { run(k); }); });
    add("own planes", [=] { ((*p).*planes)(); });
    add("libjpeg-turbo", [=] { ((*p).*theirs)(); });
    contest.check = [=] { compare(*p); };
    return contest;
}

Contest decoding(const Shared& p)
{
    auto run = [=](Decoder* kernel) {
        if (kernel) return p->decode(kernel);
        p->decode([f = p->sampling.decode](auto src, auto dst, int step) { succeed(f(src, dst, step)); });
    };
    auto kernelOf = [=](auto& build) { return build.toRgb.*p->sampling.decoder; };
    return contestOf(p, kernelOf, run, &Picture::decodeByPlanes, &Picture::theirDecode);
}

Contest encoding(const Shared& p)
{
    auto run = [=](Encoder* kernel) {
        if (kernel) return p->encode(kernel);
        p->encode([f = p->sampling.encode](auto src, int step, auto dst) { succeed(f(src, step, dst)); });
    };
    auto kernelOf = [=](auto& build) { return build.fromRgb.*p->sampling.encoder; };
    return contestOf(p, kernelOf, run, &Picture::encodeByPlanes, &Picture::theirEncode);
}

}

void addMcuCases()
{
    for (auto& size : kSizes)
        for (auto& sampling : kSamplings) {
            std::string name = std::string(sampling.name) + "/" + size.name;
            addCase("mcu/ToRGB/" + name, [&] { return decoding(std::make_shared<Picture>(sampling, size)); });
            addCase("mcu/FromRGB/" + name, [&] { return encoding(std::make_shared<Picture>(sampling, size)); });
        }
}

}
