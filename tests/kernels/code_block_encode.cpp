// SPDX-License-Identifier: Apache-2.0
// Code-block encoding: every build of its kernels equals the scalar one; the coders of decisions; the rates of passes.
#include "jpeg2k/coding/code_block_encode.h"

#include <optional>
#include <vector>

#include "code_block_coding.h"
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
    Encoder encoder = makeEncoder(64, 64);
    int lowered = 0, beyond = 0;
    for (int round = 0; round < 32 * 12; ++round) {
        const QelSize size = {random.between(1, 64), random.between(1, round % 3 ? 64 : 3)};
        Coded coded = {size, random.between(0, 3), round % 32, round / 32 % 3, 31};
        std::vector<int32_t> values(size_t(size.width * size.height));
        for (int32_t& value : values) value = randomCoefficient(random, round % 5 == 0);
        load(encoder.get(), values, coded);
        const auto before = passRates(encoder.get(), coded);
        store(encoder.get(), coded, random.between(1, round % 2 ? 3 : 300));
        CodedBlock block = {size.width, size.height, coded.band, coded.planes, coded.passes, coded.style};
        auto begin = coded.bytes.begin();
        for (uint32_t length : coded.lengths) {
            block.segments.emplace_back(begin, begin + length);
            begin += length;
        }
        auto expected = ratesOf(block);
        ASSERT_EQ(before, expected) << "style " << block.style;
        for (uint32_t& rate : expected) {
            beyond += rate > coded.bytes.size();
            if (rate <= coded.bytes.size() && coded.bytes[rate - 1] == 0xFF) --rate, ++lowered;
        }
        ASSERT_EQ(coded.rates, expected) << "style " << block.style;
    }
    EXPECT_TRUE(lowered > 0 && beyond > 0);
}

}
