// SPDX-License-Identifier: Apache-2.0
// Code-blocks beside OpenJPEG: decoding those of its own file, and encoding their coefficients again, with rates and
// distortions of all passes. The coefficients are those of the wavelet of pictures. The unit is a decision of the
// MQ coder, as counted by a decoder that takes them singly; raw bits do not count.
#include <stdlib.h>

#include <algorithm>
#include <memory>

#include "cases.h"
#include "code_block_reference.h"
#include "codec/j2k/decode/file.h"
#include "codec/j2k/decode/packet_reader.h"
#include "contest.h"
#include "openjpeg_coefficients.h"
#include "qeljx/jpeg2k_coding.h"
#include "qeljx/jpeg2k_transform.h"
#include "samples.h"

namespace qel::bench {
namespace {

// Five levels of 5/3 of the green channel, and what a quantizer of the given step leaves of it.
Coefficients coefficientsOf(const codec::Picture& picture, int step)
{
    Coefficients made = {picture.width(), picture.height(), {}};
    for (int y = 0; y < made.height; ++y)
        for (int x = 0; x < made.width; ++x) made.values.push_back(picture.row(y)[3 * x + 1] - 128);
    std::vector<uint8_t> buffer(8 * size_t(std::max(made.width, made.height)) + 16);
    QelRect rect = {0, 0, made.width, made.height};
    for (int level = 0; level < 5; ++level) {
        succeed(qeliWTFwd_B53_JPEG2K_32s_C1IR(made.values.data(), made.width * 4, &rect, buffer.data()));
        rect.width = (rect.width + 1) / 2, rect.height = (rect.height + 1) / 2;
    }
    for (int32_t& value : made.values) value = std::clamp(value / step, -2047, 2047);
    return made;
}

struct Block {
    test::CodedBlock coded;
    int x, y;
    std::vector<uint32_t> lengths;
    std::vector<uint8_t> bytes;
};

int libraryStyle(int codStyle)
{
    using namespace codec::j2k::style;
    const struct {
        int cod, library;
    } styles[] = {{kBypass, JPEG2K_BYPASS},
                  {kReset, JPEG2K_RESET_EVERY_PASS},
                  {kTerminateEvery, JPEG2K_TERMINATE_EVERY_PASS},
                  {kVerticallyCausal, JPEG2K_VERTICALLY_CAUSAL},
                  {kPredictableTermination, JPEG2K_PREDICTABLE_TERMINATION},
                  {kSegmentationSymbols, JPEG2K_SEGMENTATION_SYMBOLS}};
    int style = 0;
    for (auto& one : styles)
        if (codStyle & one.cod) style |= one.library;
    return style;
}

std::vector<Block> blocksOf(const std::vector<uint8_t>& file, int style)
{
    std::vector<Block> blocks;
    codec::j2k::File opened = codec::j2k::open(file);
    auto tile = codec::j2k::readTile(*opened.codestream, 0);
    tile.components[0].resolutions[0].forCodedBlocks(
        [&](const codec::j2k::Band& band, const codec::j2k::CodeBlock& from) {
            Block block = {{from.width, from.height, int(band.kind), band.bitPlanes - from.zeroBitPlanes,
                            int(from.passes()), libraryStyle(style)},
                           int(from.x),
                           int(from.y),
                           {},
                           {}};
            for (codec::Bytes piece : from.data) block.bytes.insert(block.bytes.end(), piece.begin(), piece.end());
            auto next = block.bytes.begin();
            for (auto& segment : from.segments) {
                block.lengths.push_back(segment.length);
                block.coded.segments.emplace_back(next, next + segment.length);
                next += segment.length;
            }
            blocks.push_back(block);
        });
    return blocks;
}

class Work {
public:
    Work(const Coefficients& coefficients, int blockSize, int style)
        : peer(coefficients, blockSize, style), original_(coefficients), blockSize_(blockSize),
          blocks_(blocksOf(peer.file(), style)), decoded_(coefficients.values.size())
    {
        for (int32_t value : original_.values)
            signMagnitudes_.push_back(int32_t((value < 0 ? 1u << 31 : 0) | uint32_t(abs(value)) << kLowest));
        int bytes = 0;
        succeed(qeliDecodeGetBufSize_JPEG2K({blockSize, blockSize}, &bytes));
        bufferBytes_ = size_t(bytes);
    }

    OpenJpegCoefficients peer;

    // Blocks do not depend on each other.
    void decode()
    {
        std::vector<uint8_t> buffer(bufferBytes_);
#pragma omp parallel for schedule(dynamic) firstprivate(buffer)
        for (const Block& block : blocks_) decode(block, buffer.data());
    }
    // The number of coded bytes.
    size_t encode() const
    {
        size_t length = 0;
#pragma omp parallel reduction(+ : length)
        {
            QelEncodeState* state = nullptr;
            succeed(qeliEncodeInitAlloc_JPEG2K(&state, blockSize_, blockSize_));
            std::vector<uint8_t> out(size_t(4 * blockSize_ * blockSize_));
#pragma omp for schedule(dynamic)
            for (const Block& block : blocks_) length += encode(block, state, out);
            succeed(qeliEncodeFree_JPEG2K(state));
        }
        return length;
    }
    double samples() const { return double(decoded_.size()); }
    double decisions() const
    {
        double count = 0;
        for (const Block& block : blocks_) count += test::decodeReference(block.coded).decisions;
        return count;
    }
    void check()
    {
        decode();
        auto valueOf = [](int32_t coded) { return coded < 0 ? -(coded & INT32_MAX) : coded; };
        std::vector<int32_t> values(decoded_.size());
        std::transform(decoded_.begin(), decoded_.end(), values.begin(), valueOf);
        require(values == original_.values && peer.decode() == values, "the coefficients differ from the peer's");
    }

    // Both write the same decisions; ends of segments may differ by bytes.
    void checkEncoding() const
    {
        double bytes = double(encode()), peers = 0;
        for (const Block& block : blocks_) peers += double(block.bytes.size());
        require(std::abs(bytes - peers) < 0.01 * peers, "the bytes differ from the peer's");
    }

private:
    void decode(const Block& block, uint8_t* buffer)
    {
        auto& coded = block.coded;
        int32_t* dst = decoded_.data() + ptrdiff_t(block.y) * original_.width + block.x;
        succeed(qeliDecodeCodeBlock_JPEG2K_1u32s_C1R(block.bytes.data(), dst, original_.width * 4,
                                                     {coded.width, coded.height}, coded.bandType, coded.planes,
                                                     coded.passes, block.lengths.data(), int(block.lengths.size()),
                                                     coded.style, nullptr, (QelDecodeCBProgrState*)buffer));
    }

    // With all that rate allocation asks for.
    size_t encode(const Block& block, QelEncodeState* state, std::vector<uint8_t>& out) const
    {
        auto& coded = block.coded;
        const int32_t* src = signMagnitudes_.data() + ptrdiff_t(block.y) * original_.width + block.x;
        int planes = 0, passes = 0, segments = 0, length = int(out.size()), isNotLast = 0;
        succeed(qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R(src, original_.width * 4, coded.width, coded.height, state,
                                                       coded.bandType, 31 - kLowest, 0, 0, coded.style, &planes,
                                                       &passes, &segments));
        for (int i = 0; i < passes; ++i) {
            uint32_t rate = 0;
            double distortion = 0;
            succeed(qeliEncodeGetRate_JPEG2K(state, i, &rate));
            succeed(qeliEncodeGetDist_JPEG2K(state, i, &distortion));
        }
        succeed(qeliEncodeStoreBits_JPEG2K_1u(out.data(), &length, state, &isNotLast));
        require(passes == coded.passes && !isNotLast, "the passes differ from the peer's");
        return size_t(length);
    }

    // The plane of the coefficients' lowest bit, so that 12 bits end at plane 30.
    static constexpr int kLowest = 31 - 12;

    Coefficients original_;
    int blockSize_;
    std::vector<int32_t> signMagnitudes_;
    std::vector<Block> blocks_;
    std::vector<int32_t> decoded_;
    size_t bufferBytes_;
};

void add(const std::string& name, const NamedPicture& named, int step, int blockSize, int style)
{
    auto make = [&named, step, blockSize, style] {
        return std::make_shared<Work>(coefficientsOf(named.picture, step), blockSize, style);
    };
    auto contest = [](Work& work, std::function<void()> ours, std::function<void()> theirs) {
        Contest made = {"decision", work.decisions(), {{kLibrary, ours}, {"OpenJPEG", theirs}}};
        made.facts = {{"samples", work.samples() / made.units}};
        made.countsMispredictions = true;
        return made;
    };
    addCase("code_block/decode/" + name, [=] {
        auto work = make();
        Contest decoding = contest(
            *work, [=] { work->decode(); }, [=] { work->peer.decode(); });
        decoding.check = [=] { work->check(); };
        return decoding;
    });
    addCase("code_block/encode/" + name, [=] {
        auto work = make();
        Contest encoding = contest(
            *work, [=] { work->encode(); }, [=] { work->peer.encode(); });
        encoding.check = [=] { work->checkEncoding(); };
        return encoding;
    });
}

}

void addCodeBlockCases()
{
    using namespace codec::j2k::style;
    for (auto& named : pictures()) {
        add(named.name + " lossless/64x64", named, 1, 64, 0);
        add(named.name + " step 16/64x64", named, 16, 64, 0);
    }
    add("noise/64x64", noise(), 1, 64, 0);
    const auto& named = pictures().front();
    add("lossless/32x32", named, 1, 32, 0);
    const struct {
        const char* name;
        int style;
    } styles[] = {{"bypass", kBypass},
                  {"bypass, every pass terminated", kBypass | kTerminateEvery},
                  {"every pass terminated, reset", kTerminateEvery | kReset},
                  {"causal, segmentation symbols", kVerticallyCausal | kSegmentationSymbols}};
    for (auto& style : styles) add(std::string("lossless ") + style.name + "/64x64", named, 1, 64, style.style);
    addCase("threads/code_block/decode/64x64", [&named] {
        auto work = std::make_shared<Work>(coefficientsOf(named.picture, 1), 64, 0);
        return oneAgainstTwo("sample", work->samples(), [=] { work->decode(); });
    });
    addCase("threads/code_block/encode/64x64", [&named] {
        auto work = std::make_shared<Work>(coefficientsOf(named.picture, 1), 64, 0);
        return oneAgainstTwo("sample", work->samples(), [=] { work->encode(); });
    });
}

}
