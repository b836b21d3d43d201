// SPDX-License-Identifier: Apache-2.0
// Code-block encoding: every build of its kernels equals the scalar one; the coders of decisions; the rates of passes.
#include "jpeg2k/coding/code_block_encode.h"

#include <optional>
#include <vector>

#include "code_block_reference.h"
#include "jpeg2k/coding/decision_coder.h"
#include "jpeg2k/coding/mq_decoder.h"
#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

using Bytes = std::vector<uint8_t>;

int32_t randomCoefficient(Random& random, bool isSparse)
{
    int magnitude = isSparse && random.between(0, 99) ? 0 : random.between(0, 0xFFFF) >> random.between(0, 14);
    return int32_t(uint32_t(random.between(0, 1)) << 31) | magnitude;
}

MqEncoder newEncoder()
{
    MqEncoder mq;
    startSegment(mq);
    resetContexts(mq);
    return mq;
}

// All decisions of all passes, the reductions, and the coded bytes.
TEST(CodeBlockEncodeKernels, EqualTheScalarOnes)
{
    constexpr QelSize kSizes[] = {{1, 1}, {16, 4}, {17, 5}, {40, 31}, {64, 64}};
    everyRoundEqualsScalar<CodeBlockEncodeKernels>(5 * 32, [&](auto& table, Random& random, int round) {
        const QelSize size = kSizes[round / 32];
        std::vector<int32_t> block(size_t(size.width) * size.height);
        for (int32_t& value : block) value = randomCoefficient(random, round % 3 == 0);
        std::vector<uint64_t> memory(size_t(BlockMaps::kMaps * BlockMaps::of(size, nullptr).size()), ~uint64_t(0));
        BlockMaps maps = BlockMaps::of(size, memory.data());
        const uint32_t all = table.load(block.data(), 4 * size.width, 3, maps);
        PassMode mode = {31 - __builtin_clz(all | 1), round % 4, (round & 4) != 0, (round & 8) != 0, (round & 16) != 0};
        Bytes decisions;
        std::vector<int64_t> reductions;
        auto take = [&](auto pass) {
            Bytes record(size_t(maps.words * maps.stripes) * 160 + table.kRecordSlack);
            PassRecord result = pass(maps, mode, record.data());
            decisions.insert(decisions.end(), record.data(), result.end);
            reductions.push_back(result.reduction);
        };
        for (take(table.cleanup); mode.plane > 6;) {
            --mode.plane;
            take(table.significance), take(table.refinement), take(table.cleanup);
        }
        const int count = int(decisions.size());
        Bytes mq(decisions.size() * 3), raw(mq);
        MqEncoder encoder = newEncoder();
        RawPacker packer;
        startSegment(packer);
        mq.resize(size_t(table.encode(encoder, decisions.data(), count, mq.data()) - mq.data()));
        raw.resize(size_t(table.pack(packer, decisions.data(), count, raw.data()) - raw.data()));
        return std::tuple(memory, decisions, reductions, mq, uint8_t(encoder.b), raw);
    });
}

// With a method the arithmetic coder's segment, else the raw one's.
Bytes encode(std::optional<MqTermination> method, const Bytes& decisions)
{
    Bytes bytes(3 * decisions.size() + kTerminationBytes);
    const int count = int(decisions.size());
    MqEncoder mq = newEncoder();
    RawPacker raw;
    startSegment(raw);
    uint8_t* end = method ? decEncoderMQEncodeAndTerminate(mq, *method, decisions.data(), count, bytes.data())
                          : decEncoderRawEncodeAndTerminate(raw, decisions.data(), count, bytes.data());
    bytes.resize(size_t(end - bytes.data()));
    return bytes;
}

bool decodesTo(const Bytes& bytes, const Bytes& decisions)
{
    MqDecoderState mq;
    mqDecoderResetCtx(&mq);
    mqDecoderInit(&mq, bytes.data(), int(bytes.size()));
    for (uint8_t decision : decisions)
        if (ownqj_DecoderDecode_asm(&mq, decision >> 1, owniEstimator_JPEG2K) != (decision & 1)) return false;
    return true;
}

// The sequence of T.88 H.2, in a context of state 0, with its bytes up to the marker.
TEST(DecisionCoder, TestSequence)
{
    const uint8_t in[] = {0x00, 0x02, 0x00, 0x51, 0x00, 0x00, 0x00, 0xC0, 0x03, 0x52, 0x87,
                          0x2A, 0xAA, 0xAA, 0xAA, 0xAA, 0x82, 0xC0, 0x20, 0x00, 0xFC, 0xD7,
                          0x9E, 0xF6, 0xBF, 0x7F, 0xED, 0x90, 0x4F, 0x46, 0xA3, 0xBF};
    const Bytes expected = {0x84, 0xC7, 0x3B, 0xFC, 0xE1, 0xA1, 0x43, 0x04, 0x02, 0x20, 0x00, 0x00, 0x41, 0x0D,
                            0xBB, 0x86, 0xF4, 0x31, 0x7F, 0xFF, 0x88, 0xFF, 0x37, 0x47, 0x1A, 0xDB, 0x6A, 0xDF};
    Bytes decisions;
    for (uint8_t byte : in)
        for (int bit = 7; bit >= 0; --bit) decisions.push_back(uint8_t(kContextSign << 1 | (byte >> bit & 1)));
    EXPECT_EQ(encode(kFlush, decisions), expected);
    EXPECT_TRUE(decodesTo(expected, decisions));
}

Bytes randomDecisions(Random& random, int count, int contexts)
{
    Bytes decisions;
    for (int i = 0; i < count; ++i)
        decisions.push_back(uint8_t(random.between(0, contexts) << 1 | (random.between(0, 3) == 0)));
    return decisions;
}

TEST(DecisionCoder, RawBits)
{
    const struct {
        Bytes decisions, bytes;
    } table[] = {
        {{}, {}},
        {{1}, {0xAA}},
        {{0, 1, 1}, {0x6A}},
        {{1, 1, 1, 1, 1, 1, 1}, {0xFE}},
        {{1, 1, 1, 1, 1, 1, 1, 1}, {0xFF}},
        {{1, 1, 1, 1, 1, 1, 1, 1, 1}, {0xFF, 0x55}},
        {{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0}, {0xFF, 0x7F, 0x2A}},
    };
    for (auto& row : table) EXPECT_EQ(encode({}, row.decisions), row.bytes);
}

// Of all strings of two bytes, after what the segment begins with, none that is shorter will do.
TEST(DecisionCoder, ShortestTermination)
{
    Random random(3);
    int saved = 0;
    for (int round = 0; round < 3000; ++round) {
        Bytes decisions = randomDecisions(random, random.between(0, 60), random.between(0, kContexts - 1));
        Bytes flushed = encode(kFlush, decisions);
        Bytes shortest = encode(kShortest, decisions);
        ASSERT_TRUE(decodesTo(flushed, decisions));
        ASSERT_TRUE(decodesTo(shortest, decisions));
        ASSERT_LE(shortest.size(), flushed.size());
        saved += int(flushed.size() - shortest.size());
        if (shortest.empty()) continue;
        Bytes shorter(shortest.begin(), shortest.end() - 1);
        size_t free = std::min<size_t>(shorter.size(), round < 20 ? 2 : 1);
        for (uint32_t value = 0; value < 1u << (8 * free); ++value) {
            for (size_t i = 0; i < free; ++i) shorter[shorter.size() - 1 - i] = uint8_t(value >> (8 * i));
            ASSERT_FALSE(decodesTo(shorter, decisions)) << round << ' ' << value;
        }
    }
    EXPECT_GT(saved, 0);
}

struct Contexts {
    uint32_t index[kContexts] = {46, 3, 4}, mps[kContexts] = {};
};

// A segment as T.800 Figures C.5 to C.8 code it, with the registers after a decision; or of raw bits (D.6).
struct PlainSegment {
    uint32_t a = 0x8000, c = 0, ct = 12, free = 0;
    Bytes bytes = {0}; // the first is none of the segment; the last is B, or has free bits

    void encode(Contexts& contexts, int context, uint32_t decision)
    {
        uint32_t &index = contexts.index[context], &mps = contexts.mps[context];
        const auto& [qe, afterMps, afterLps, isSwitched] = owniEstimator_JPEG2K[index];
        bool isMps = decision == mps;
        a -= qe;
        isMps == (a >= qe) ? c += qe : a = qe;
        if (isMps && a >= 0x8000) return;
        index = isMps ? afterMps : afterLps;
        mps ^= isMps ? 0 : isSwitched;
        for (; a < 0x8000; a *= 2) {
            c *= 2;
            if (--ct == 0) byteOut();
        }
    }
    void byteOut()
    {
        if (bytes.back() != 0xFF && c >> 27) ++bytes.back(), c &= 0x7FFFFFF;
        ct = bytes.back() == 0xFF ? 7 : 8;
        bytes.push_back(uint8_t(c >> (27 - ct)));
        c &= (1u << (27 - ct)) - 1;
    }
    void pack(uint32_t bit)
    {
        if (free == 0) free = bytes.back() == 0xFF ? 7 : 8, bytes.push_back(0);
        bytes.back() |= uint8_t(bit << --free);
    }
    uint32_t rate(bool isRaw) const
    {
        auto outs = uint32_t(bytes.size()) - 1;
        if (isRaw) return outs;
        uint32_t more = 27 - ct > (bytes.back() < 254 ? 23 : 22) ? 5u : 4u;
        return outs == 0 ? more - 1 : outs - 1 + more;
    }
};

// From what the segments of a block decode to, coded again; the coders put out the same bytes.
std::vector<uint32_t> ratesOf(const CodedBlock& block)
{
    DecodedBlock decoded = decodeReference(block);
    Contexts contexts;
    PlainSegment plain;
    std::vector<uint32_t> rates;
    uint32_t base = 0;
    for (int pass = 0; pass < block.passes; ++pass) {
        int segment = segmentOf(pass, block.style);
        if (pass > 0 && segment != segmentOf(pass - 1, block.style)) {
            base += uint32_t(block.segments[segment - 1].size());
            plain = {};
        }
        bool isRaw = block.style & JPEG2K_BYPASS && pass > 9 && kindOf(pass) != PassKind::cleanup;
        for (uint8_t coded : decoded.passes[pass])
            isRaw ? plain.pack(coded & 1) : plain.encode(contexts, coded >> 1, coded & 1);
        if (block.style & JPEG2K_RESET_EVERY_PASS) contexts = {};
        if (plain.bytes.size() > 2) {
            EXPECT_TRUE(std::equal(plain.bytes.begin() + 1, plain.bytes.end() - 1, block.segments[segment].begin()));
        }
        rates.push_back(base + plain.rate(isRaw));
        for (int i = pass; i > 0; --i) rates[i - 1] = std::min(rates[i - 1], rates[i]);
    }
    return rates;
}

// Of all styles and terminations, before and after the bytes are stored.
TEST(CodeBlockRates, FollowFromTheRegisters)
{
    Random random(5);
    QelEncodeState* state = nullptr;
    ASSERT_EQ(qeliEncodeInitAlloc_JPEG2K(&state, 64, 64), qelStsNoErr);
    int lowered = 0, beyond = 0;
    for (int round = 0; round < 32 * 12; ++round) {
        CodedBlock block = {random.between(1, 64), random.between(1, round % 3 ? 64 : 3), random.between(0, 3)};
        block.style = round % 32;
        std::vector<int32_t> values(size_t(block.width * block.height));
        for (int32_t& value : values) value = randomCoefficient(random, round % 5 == 0);
        int segments = 0;
        ASSERT_EQ(qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R(values.data(), 4 * block.width, block.width, block.height,
                                                         state, block.bandType, 31, round / 32 % 3, 0, block.style,
                                                         &block.planes, &block.passes, &segments),
                  qelStsNoErr);
        auto rates = [&] {
            std::vector<uint32_t> all(size_t(block.passes));
            for (int i = 0; i < block.passes; ++i) EXPECT_EQ(qeliEncodeGetRate_JPEG2K(state, i, &all[i]), qelStsNoErr);
            return all;
        };
        const auto before = rates();
        Bytes bytes(1 << 16);
        uint32_t count = 0;
        for (int more = 1, piece; more; count += uint32_t(piece)) {
            piece = random.between(1, round % 2 ? 3 : 300);
            ASSERT_EQ(qeliEncodeStoreBits_JPEG2K_1u(bytes.data() + count, &piece, state, &more), qelStsNoErr);
        }
        auto begin = bytes.begin();
        for (uint32_t i = 0, length = 0; i < uint32_t(segments); ++i, begin += length) {
            ASSERT_EQ(qeliEncodeGetTermPassLen_JPEG2K(state, int(i), &length), qelStsNoErr);
            block.segments.emplace_back(begin, begin + length);
        }
        auto expected = ratesOf(block);
        ASSERT_EQ(before, expected) << "style " << block.style;
        for (uint32_t& rate : expected) {
            beyond += rate > count;
            if (rate <= count && bytes[rate - 1] == 0xFF) --rate, ++lowered;
        }
        ASSERT_EQ(rates(), expected) << "style " << block.style;
    }
    EXPECT_TRUE(lowered > 0 && beyond > 0);
    EXPECT_EQ(qeliEncodeFree_JPEG2K(state), qelStsNoErr);
}

}
