// SPDX-License-Identifier: Apache-2.0
// Whatever the bytes and however they are said to be coded, a code-block decodes within its buffers.
#include "input.h"

// The first bytes tell how the rest is coded, and where its segments end.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    constexpr size_t kHead = 8, kMostSegments = 255;
    if (size < kHead) return 0;
    const int low = data[5] & 0x1F, high = data[5] >> 5 | (data[6] & 3) << 3;
    const QelSize block = {1 + data[0] % 80, 1 + data[1] % 80};
    const size_t segments = std::min(size_t(data[7]), (size - kHead) / 2);
    const uint8_t* const coded = data + kHead + segments;
    size_t left = size - kHead - segments;
    std::vector<uint32_t> lengths(kMostSegments);
    for (size_t i = 0; i < segments; ++i) {
        lengths[i] = uint32_t(std::min(size_t(data[kHead + i]), left));
        left -= lengths[i];
    }
    if (segments > 0) lengths[segments - 1] += uint32_t(left);

    int bytes = 0;
    if (qeliDecodeGetBufSize_JPEG2K(block, &bytes) != qelStsNoErr) return 1;
    Input in(coded, size_t(data + size - coded));
    Buffer state{size_t(bytes)}, dst(size_t(block.width) * size_t(block.height) * 4);
    Buffer src(in.left(), in);
    int plane = 0;
    qeliDecodeCodeBlock_JPEG2K_1u32s_C1R(src, dst.as<int32_t>(), block.width * 4, block, data[2] & 3, data[3], data[4],
                                         lengths.data(), int(segments), low | high << 16, &plane,
                                         state.as<QelDecodeCBProgrState>());
    return 0;
}
