// SPDX-License-Identifier: Apache-2.0
// Whatever the bytes, tables, states and positions, and whichever functions read them in turns, decoders stay within
// their buffers.
#include "huffman.h"

namespace {

struct Table {
    Buffer bytes;
    bool isValid;
    QelDecodeHuffmanSpec* spec() { return bytes.as<QelDecodeHuffmanSpec>(); }
};
Table tableOf(Input& in)
{
    int size = 0;
    qeliDecodeHuffmanSpecGetBufSize_JPEG_8u(&size);
    Table table = {Buffer(size_t(size)), false};
    StatedTable stated(in);
    table.isValid = qeliDecodeHuffmanSpecInit_JPEG_8u(stated.bits, stated.values, table.spec()) == qelStsNoErr;
    return table;
}

struct Scan {
    Buffer src;
    int length, pos = 0;
    uint32_t marker = 0;
    int16_t lastDc = 0;
    Buffer block{128};

    QelStatus read(int which, Input& in, const QelDecodeHuffmanSpec* dc, const QelDecodeHuffmanSpec* ac,
                   QelDecodeHuffmanState* state)
    {
        auto* dst = block.as<int16_t>();
        const int ss = in.below(64), se = in.below(64), al = in.below(14);
        switch (which) {
        case 0:
            return qeliDecodeHuffman8x8_JPEG_1u16s_C1(src, length, &pos, dst, &lastDc, &marker, dc, ac, state);
        case 1:
            return qeliDecodeHuffmanOne_JPEG_1u16s_C1(src, length, &pos, dst, &marker, dc, state);
        case 2:
            return qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(src, length, &pos, dst, &lastDc, &marker, al, dc, state);
        case 3:
            return qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(src, length, &pos, dst, &marker, al, state);
        case 4:
            return qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(src, length, &pos, dst, &marker, ss, se, al, ac, state);
        default:
            return qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(src, length, &pos, dst, &marker, ss, se, al, ac, state);
        }
    }
};

// Has no length: a marker ends it.
void readDirect(Input& in, const QelDecodeHuffmanSpec* dc, const QelDecodeHuffmanSpec* ac)
{
    const size_t length = in.left();
    Buffer src(length + 2), block(128);
    in.fill(src, length);
    src[length] = 0xFF, src[length + 1] = 0xD9;
    int bits = 0, valid = 0;
    uint32_t marker = 0, prefetched = 0;
    int16_t lastDc = 0;
    while (marker == 0 && qeliDecodeHuffman8x8_Direct_JPEG_1u16s_C1(src, &bits, block.as<int16_t>(), &lastDc, &marker,
                                                                    &prefetched, &valid, dc, ac) == qelStsNoErr) {}
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input in(data, size);
    Table dcTable = tableOf(in), acTable = tableOf(in);
    if (!dcTable.isValid || !acTable.isValid) return 0;
    const QelDecodeHuffmanSpec *dc = dcTable.spec(), *ac = acTable.spec();
    int bytes = 0;
    qeliDecodeHuffmanStateGetBufSize_JPEG_8u(&bytes);
    Buffer state{size_t(bytes)};
    qeliDecodeHuffmanStateInit_JPEG_8u(state.as<QelDecodeHuffmanState>());
    const int mode = in.below(4);
    if (mode == 0) return readDirect(in, dc, ac), 0;
    if (mode == 1) in.fill(state, size_t(bytes));

    Buffer chosen(32, in);
    const int length = int(in.left());
    Scan scan = {Buffer(size_t(length), in), length};
    if (mode == 1) scan.pos = chosen[31];
    Input choices(chosen, 31);
    for (int i = 0; i < 200; ++i) {
        if (choices.isEmpty()) choices = Input(chosen, 31);
        int before = scan.pos;
        QelStatus status = scan.read(choices.below(6), choices, dc, ac, state.as<QelDecodeHuffmanState>());
        if (status == qelStsJPEGOutOfBufErr || (status != qelStsNoErr && scan.pos == before)) break;
    }
    return 0;
}
