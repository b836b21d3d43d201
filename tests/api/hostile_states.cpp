// SPDX-License-Identifier: Apache-2.0
// States of any bytes, as a caller leaves them who forgets to initialise: no coder touches memory but its own.
#include <gtest/gtest.h>

#include <functional>

#include "guarded.h"
#include "huffman_stream.h"

using namespace qel::test;

namespace {

// An object of bytes that mean nothing, at any address.
template <class T> struct Hostile {
    explicit Hostile(Random& random) : bytes(sizeof(T), Fault::after, size_t(random.between(0, 3)))
    {
        random.fill(bytes.data(), bytes.size());
    }
    T* get() { return (T*)bytes.data(); }

    Guarded<uint8_t> bytes;
};

TEST(HostileStates, EncodersStayWithinTheirBuffers)
{
    Random random(1);
    for (int round = 0; round < 4000; ++round) {
        Hostile<QelEncodeHuffmanState> state(random);
        auto spec = encodeSpecOf(randomLists(random));
        auto block = randomBlock(random, 1 << random.between(0, 6), 11);
        int room = random.between(1, random.between(1, 700)), pos = random.between(-1, room + 1);
        int ss = random.between(1, 63), se = random.between(ss, 63), al = random.between(0, 13);
        Guarded<uint8_t> dst((size_t)room);
        uint32_t n[256] = {};
        int16_t last = 0, *b = block.data();
        uint8_t* d = dst.data();
        auto s = state.get();
        const std::function<void(int)> coders[] = {
            [&](int flush) { qeliEncodeHuffman8x8_JPEG_16s1u_C1(b, d, room, &pos, &last, &spec, &spec, s, flush); },
            [&](int flush) { qeliEncodeHuffmanOne_JPEG_16s1u_C1(b, d, room, &pos, &spec, s, flush); },
            [&](int flush) { qeliEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(b, d, room, &pos, al, s, flush); },
            [&](int flush) {
                qeliEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(b, d, room, &pos, ss, se, al, &spec, s, flush);
            },
            [&](int flush) {
                qeliEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(b, d, room, &pos, ss, se, al, &spec, s, flush);
            },
            [&](int flush) { qeliGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(b, n, ss, se, al, s, flush); }};
        for (int flush : {0, random.between(0, 1)}) coders[round % 6](flush);
        ASSERT_TRUE(dst.intact() && state.bytes.intact()) << round;
    }
}

TEST(HostileStates, DecodersStayWithinTheirBuffers)
{
    Random random(2);
    for (int round = 0; round < 4000; ++round) {
        Hostile<QelDecodeHuffmanState> state(random);
        auto spec = specOf(randomLists(random));
        Stream in(randomStream(random, random.between(1, 60)));
        Guarded<int16_t> block(64);
        int ss = random.between(1, 63), se = random.between(ss, 63), al = random.between(0, 13), len = in.len();
        int16_t last = 0, *b = block.data();
        const uint8_t* d = in.src.data();
        int* pos = &in.pos;
        uint32_t* marker = &in.marker;
        auto s = state.get();
        const std::function<void()> readers[] = {
            [&] { qeliDecodeHuffman8x8_JPEG_1u16s_C1(d, len, pos, b, &last, marker, &spec, &spec, s); },
            [&] { qeliDecodeHuffmanOne_JPEG_1u16s_C1(d, len, pos, b, marker, &spec, s); },
            [&] { qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(d, len, pos, b, &last, marker, al, &spec, s); },
            [&] { qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(d, len, pos, b, marker, al, s); },
            [&] { qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(d, len, pos, b, marker, ss, se, al, &spec, s); },
            [&] { qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(d, len, pos, b, marker, ss, se, al, &spec, s); }};
        for (int i = 0; i < 4; ++i) readers[round % 6]();
        ASSERT_TRUE(block.intact() && state.bytes.intact() && *pos <= len) << round;
    }
}

}
