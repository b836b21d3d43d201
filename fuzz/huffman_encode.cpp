// SPDX-License-Identifier: Apache-2.0
// Whatever the coefficients, tables, states and room, encoders stay within their buffers.
#include "huffman.h"

namespace {

struct Encoder {
    Buffer dst, block{128};
    int room, pos = 0;
    int16_t lastDc = 0;
    Buffer table, state;

    Encoder(int bytes, size_t tableSize, size_t stateSize)
        : dst(size_t(bytes)), room(bytes), table(tableSize), state(stateSize)
    {}

    QelStatus write(int which, Input& in)
    {
        in.fill(block, 2 * size_t(in.below(65)));
        const auto* src = block.as<int16_t>();
        auto* spec = table.as<QelEncodeHuffmanSpec>();
        auto* bits = state.as<QelEncodeHuffmanState>();
        const int ss = in.below(64), se = in.below(64), al = in.below(14), flush = in.below(8) == 0;
        uint32_t counts[256] = {};
        switch (which) {
        case 0:
            return qeliEncodeHuffman8x8_JPEG_16s1u_C1(src, dst, room, &pos, &lastDc, spec, spec, bits, flush);
        case 1:
            return qeliEncodeHuffmanOne_JPEG_16s1u_C1(src, dst, room, &pos, spec, bits, flush);
        case 2:
            return qeliEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(src, dst, room, &pos, &lastDc, al, spec, bits, flush);
        case 3:
            return qeliEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(src, dst, room, &pos, al, bits, flush);
        case 4:
            return qeliEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(src, dst, room, &pos, ss, se, al, spec, bits, flush);
        case 5:
            return qeliEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(src, dst, room, &pos, ss, se, al, spec, bits, flush);
        case 6:
            return qeliGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(src, counts, ss, se, al, bits, flush);
        case 7:
            return qeliGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(src, counts, ss, se, al, bits, flush);
        default:
            return qeliGetHuffmanStatistics8x8_JPEG_16s_C1(src, counts, counts, &lastDc);
        }
    }
};

// A block adds 513 bytes at most.
void writeDirect(Input& in, const QelEncodeHuffmanSpec* spec)
{
    Buffer dst(513), block(128, in);
    int bits = 0;
    int16_t lastDc = in.value<int16_t>();
    qeliEncodeHuffman8x8_Direct_JPEG_16s1u_C1(block.as<int16_t>(), dst, &bits, &lastDc, spec, spec);
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input in(data, size);
    int tableSize = 0, stateSize = 0;
    qeliEncodeHuffmanSpecGetBufSize_JPEG_8u(&tableSize);
    qeliEncodeHuffmanStateGetBufSize_JPEG_8u(&stateSize);
    StatedTable stated(in);
    const bool isCounted = in.below(2) == 1;
    if (isCounted) {
        uint32_t counts[256] = {};
        in.fill(counts, sizeof counts / 8);
        for (uint32_t& count : counts) count &= 0x1FFFFF;
        qeliEncodeHuffmanRawTableInit_JPEG_8u(counts, stated.bits, stated.values);
    }
    const int room = in.below(8) * 100 + in.below(200);
    Encoder encoder(room, size_t(tableSize), size_t(stateSize));
    auto* spec = encoder.table.as<QelEncodeHuffmanSpec>();
    if (qeliEncodeHuffmanSpecInit_JPEG_8u(stated.bits, stated.values, spec) != qelStsNoErr) return 0;
    qeliEncodeHuffmanStateInit_JPEG_8u(encoder.state.as<QelEncodeHuffmanState>());
    if (in.below(4) == 0) {
        in.fill(encoder.state, size_t(stateSize));
        encoder.pos = in.below(256) - 8;
    }
    writeDirect(in, spec);
    for (int calls = 0; calls < 200 && !in.isEmpty(); ++calls) encoder.write(in.below(9), in);
    return 0;
}
