// Code-block encoding: every build of its kernels equals the scalar one, and the coders of decisions.
#include "jpeg2k/code_block_encode.h"

#include <vector>

#include "jpeg2k/decision_coder.h"
#include "jpeg2k/mq_decoder.h"
#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

using Bytes = std::vector<uint8_t>;

// All decisions of all passes, the reductions, and the coded bytes.
TEST(CodeBlockEncodeKernels, EqualTheScalarOnes)
{
    constexpr QelSize kSizes[] = {{1, 1}, {16, 4}, {17, 5}, {40, 31}, {64, 64}};
    everyRoundEqualsScalar<CodeBlockEncodeKernels>(5 * 32, [&](auto& table, Random& random, int round) {
        const QelSize size = kSizes[round / 32];
        std::vector<int32_t> block(size_t(size.width) * size.height);
        for (int32_t& value : block)
            value = int32_t(uint32_t(random.between(0, 1)) << 31) | random.between(0, 0xFFFF) >> random.between(0, 14);
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
        DecisionCoder coder;
        coder.start(kFlush);
        mq.resize(size_t(table.encode(coder.mq, decisions.data(), count, mq.data()) - mq.data()));
        raw.resize(size_t(table.pack(coder.raw, decisions.data(), count, raw.data()) - raw.data()));
        return std::tuple(memory, decisions, reductions, mq, uint8_t(coder.mq.b), raw);
    });
}

// Runs of 0 and 1 in one context, of any length, as they are when they come singly: the same bytes and registers.
TEST(CodeBlockEncodeKernels, RunsAreEncodedAsTheirDecisions)
{
    everyBuild<CodeBlockEncodeKernels>([](const CodeBlockEncodeKernels& table) {
        Random random(4);
        DecisionCoder whole, singly;
        whole.start(kFlush), singly.start(kFlush);
        for (int round = 0; round < 2000; ++round) {
            Bytes decisions;
            // Both senses of the more probable decision, from even chances to hardly any.
            int odds = 1 << random.between(0, 9), often = round / 500 % 2;
            for (int i = random.between(1, 200); i > 0; --i)
                decisions.push_back(uint8_t(kContextRunLength << 1 | (often ^ (random.between(0, odds) == 0))));
            Bytes a(decisions.size() * 3), b(a);
            uint8_t *aEnd = table.encode(whole.mq, decisions.data(), int(decisions.size()), a.data()), *bEnd = b.data();
            for (uint8_t& decision : decisions) bEnd = table.encode(singly.mq, &decision, 1, bEnd);
            ASSERT_EQ(aEnd - a.data(), bEnd - b.data());
            ASSERT_EQ(a, b);
            ASSERT_EQ(whole.mq.a, singly.mq.a);
            ASSERT_EQ(whole.mq.c, singly.mq.c);
        }
    });
}

using Encode = int (*)(DecisionCoder&, uint8_t*, int*);

Bytes encode(Encode encodeAndTerminate, int method, const Bytes& decisions, int room = 1 << 16)
{
    DecisionCoder coder;
    coder.start(method);
    coder.record(decisions.data(), int(decisions.size()));
    Bytes all;
    for (int count = room; count == room;) {
        Bytes part(size_t(room) + 1, 0xEE);
        int before = coder.end - coder.position;
        int left = encodeAndTerminate(coder, part.data(), &count);
        EXPECT_LE(left, before);
        EXPECT_TRUE(count == room || left == 0);
        EXPECT_EQ(part[size_t(room)], 0xEE);
        all.insert(all.end(), part.begin(), part.begin() + count);
    }
    return all;
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
    EXPECT_EQ(encode(decEncoderMQEncodeAndTerminate, kFlush, decisions), expected);
    EXPECT_TRUE(decodesTo(expected, decisions));
}

Bytes randomDecisions(Random& random, int count, int contexts)
{
    Bytes decisions;
    for (int i = 0; i < count; ++i)
        decisions.push_back(uint8_t(random.between(0, contexts) << 1 | (random.between(0, 3) == 0)));
    return decisions;
}

TEST(DecisionCoder, StopsWhereTheRoomEnds)
{
    Random random(2);
    for (auto encodeAndTerminate : {decEncoderMQEncodeAndTerminate, decEncoderRawEncodeAndTerminate})
        for (int method : {kFlush, kShortest, kPredictable})
            for (int count : {0, 1, 7, 8, 500}) {
                Bytes decisions = randomDecisions(random, count, kContexts - 1);
                Bytes whole = encode(encodeAndTerminate, method, decisions);
                for (int room : {1, 2, 3, 5, 30})
                    ASSERT_EQ(encode(encodeAndTerminate, method, decisions, room), whole) << room;
            }
    for (auto encodeSome : {decEncoderMQEncode, decEncoderRawEncode}) {
        DecisionCoder coder;
        coder.start(kFlush);
        Bytes decisions(100, 1), none(1);
        coder.record(decisions.data(), 100);
        int count = 0;
        EXPECT_EQ(encodeSome(coder, none.data(), &count), 100);
        EXPECT_EQ(count, 0);
    }
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
    for (auto& row : table) EXPECT_EQ(encode(decEncoderRawEncodeAndTerminate, kFlush, row.decisions), row.bytes);
}

// Of all strings of two bytes, behind what the segment begins with, none that is shorter will do.
TEST(DecisionCoder, ShortestTermination)
{
    Random random(3);
    int saved = 0;
    for (int round = 0; round < 3000; ++round) {
        Bytes decisions = randomDecisions(random, random.between(0, 60), random.between(0, kContexts - 1));
        Bytes flushed = encode(decEncoderMQEncodeAndTerminate, kFlush, decisions);
        Bytes shortest = encode(decEncoderMQEncodeAndTerminate, kShortest, decisions);
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

}
