// SPDX-License-Identifier: Apache-2.0
// Whatever the coefficients and the way to code them, a code-block is stored within its buffers, whole or in pieces,
// and decodes to what it was, without an error.
#include <cstdlib>

#include "input.h"

namespace {

struct Coded {
    QelSize size;
    int band, style;
    int planes = 0, passes = 0, segments = 0;
    std::vector<uint8_t> bytes = {};
    std::vector<uint32_t> lengths = {};
};

std::vector<int32_t> blockOf(Input& in, QelSize size)
{
    std::vector<int32_t> block(size_t(size.width) * size_t(size.height));
    const int down = in.below(31);
    for (int32_t& value : block) {
        uint32_t drawn = in.value<uint16_t>(), magnitude = drawn << 16 >> 1 >> down;
        value = int32_t(magnitude == 0 ? 0 : magnitude | drawn << 31);
    }
    return block;
}

void store(Input& in, QelEncodeState* encoder, Coded& coded)
{
    for (int more = 1; more;) {
        int length = 1 + in.below(256);
        Buffer piece{size_t(length)};
        if (qeliEncodeStoreBits_JPEG2K_1u(piece, &length, encoder, &more) != qelStsNoErr) std::abort();
        coded.bytes.insert(coded.bytes.end(), piece.as<uint8_t>(), piece.as<uint8_t>() + length);
    }
    coded.lengths.resize(size_t(coded.segments) + 1);
    for (int i = 0; i < coded.segments; ++i) qeliEncodeGetTermPassLen_JPEG2K(encoder, i, &coded.lengths[size_t(i)]);
    for (int i = 0; i < coded.passes; ++i) {
        uint32_t rate = 0;
        double distortion = 0;
        if (qeliEncodeGetRate_JPEG2K(encoder, i, &rate) != qelStsNoErr) std::abort();
        qeliEncodeGetDist_JPEG2K(encoder, i, &distortion);
    }
}

std::vector<int32_t> decode(const Coded& coded)
{
    int bytes = 0, plane = 0;
    qeliDecodeGetBufSize_JPEG2K(coded.size, &bytes);
    Buffer state{size_t(bytes)}, src(coded.bytes.size());
    std::copy(coded.bytes.begin(), coded.bytes.end(), src.as<uint8_t>());
    std::vector<int32_t> block(size_t(coded.size.width) * size_t(coded.size.height));
    if (qeliDecodeCodeBlock_JPEG2K_1u32s_C1R(src, block.data(), 4 * coded.size.width, coded.size, coded.band,
                                             coded.planes, coded.passes, coded.lengths.data(), coded.segments,
                                             coded.style, &plane, state.as<QelDecodeCBProgrState>()) != qelStsNoErr)
        std::abort();
    return block;
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QelEncodeState* encoder = [] {
        QelEncodeState* made = nullptr;
        qeliEncodeInitAlloc_JPEG2K(&made, 80, 80);
        return made;
    }();
    Input in(data, size);
    const int style = in.below(64), method = in.below(3), leastRates = in.below(2) * JPEG2K_LEAST_RATES;
    Coded coded = {{1 + in.below(80), 1 + in.below(80)},
                   in.below(4),
                   (style & 0x1F) | (method == 2 ? int(JPEG2K_PREDICTABLE_TERMINATION) : 0)};
    std::vector<int32_t> block = blockOf(in, coded.size);
    if (qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R(block.data(), 4 * coded.size.width, coded.size.width, coded.size.height,
                                               encoder, coded.band, 31, method, 0, style | leastRates, &coded.planes,
                                               &coded.passes, &coded.segments) != qelStsNoErr)
        std::abort();
    store(in, encoder, coded);
    if (decode(coded) != block) std::abort();
    return 0;
}
