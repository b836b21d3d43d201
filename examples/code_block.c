/* SPDX-License-Identifier: Apache-2.0 */
/* A JPEG 2000 code-block: coded, cut at a rate, written as a file of its own, and decoded segment by segment.
 *     code_block picture.pgm block.j2c [bytes]
 * The picture, of up to 64x64 samples, is the code-block: no wavelet is in between.
 */
#include "t800.h"

#include <math.h>

enum { kSide = 64, kPlanes = 8 + kGuardBits - 1, kLL = 0, kStyle = JPEG2K_BYPASS, kBypassInCod = 0x1 };

static int inSignAndMagnitude(int value) { return value < 0 ? (int)(0x80000000u | (unsigned)-value) : value; }
static int fromSignAndMagnitude(int32_t value) { return value < 0 ? -(value & 0x7FFFFFFF) : value; }

/* The passes of a segment with bypass: ten first, then two raw ones and one that is not take turns. */
static int passesOfSegment(int segment) { return segment == 0 ? 10 : segment % 2 ? 2 : 1; }

/* The last pass whose rate fits into so many bytes, and the segments up to it. A rate may lie a few bytes behind the
 * end of its segment: what counts is the lesser of the two. */
static void cutAtRate(const QelEncodeState* state, int passes, uint32_t most, const uint8_t* bytes, CodedBlock* block)
{
    uint32_t start = 0, length = 0, rate = 0;
    int pass = 0;
    for (block->segments = 0; pass < passes; ++block->segments) {
        int* kept = &block->passesIn[block->segments];
        check(qeliEncodeGetTermPassLen_JPEG2K(state, block->segments, &length));
        for (*kept = 0; *kept < passesOfSegment(block->segments) && pass < passes; ++*kept, ++pass) {
            check(qeliEncodeGetRate_JPEG2K(state, pass, &rate));
            if (rate > start + length) rate = start + length;
            if (rate > most) break;
            block->lengths[block->segments] = (int)(rate - start);
        }
        if (rate > most) {
            block->segments += *kept > 0;
            break;
        }
        block->lengths[block->segments] = (int)length;
        start += length;
    }
    block->passes = pass;
    /* A decoder supplies 0xFF bytes at the end of the last segment; a file is not to have them there. */
    for (int i = 0, end = 0; i < block->segments; ++i) {
        end += block->lengths[i];
        while (i == block->segments - 1 && block->lengths[i] > 0 && bytes[end - 1] == 0xFF) --end, --block->lengths[i];
    }
    block->bytes = bytes;
}

static double psnr(const int32_t* decoded, const Pnm* picture)
{
    double sum = 0;
    int samples = picture->width * picture->height;
    for (int i = 0; i < samples; ++i) {
        double error = fromSignAndMagnitude(decoded[i]) + 128 - picture->samples[i];
        sum += error * error;
    }
    return sum > 0 ? 10 * log10(255.0 * 255.0 * samples / sum) : INFINITY;
}

/* As a decoder would that gets one segment after the other. */
static void decodeBySegments(const CodedBlock* block, const Pnm* picture)
{
    static int32_t decoded[kSide * kSide];
    QelSize most = {kSide, kSide}, size = {picture->width, picture->height};
    int bytes;
    check(qeliDecodeGetBufSize_JPEG2K(most, &bytes));
    QelDecodeCBProgrState* state = take((size_t)bytes);
    check(qeliDecodeCBProgrInit_JPEG2K(state));
    check(qeliDecodeCBProgrAttach_JPEG2K_32s_C1R(decoded, size.width * 4, size, kLL, kPlanes - block->zeroPlanes,
                                                 block->passes, kStyle, state));
    const uint8_t* at = block->bytes;
    for (int i = 0; i < block->segments; at += block->lengths[i++]) {
        check(qeliDecodeCBProgrStep_JPEG2K(at, block->lengths[i], state));
        printf("segment %2d: %2d passes in %4d bytes, PSNR %.2f dB\n", i, block->passesIn[i], block->lengths[i],
               psnr(decoded, picture));
    }
    free(state);
}

int main(int argc, char** argv)
{
    if (argc < 3) fail("usage: code_block picture.pgm block.j2c [bytes]");
    Pnm picture = readPnm(argv[1]);
    if (picture.channels != 1 || picture.maximum != 255 || picture.width > kSide || picture.height > kSide)
        fail("a PGM file of at most 64x64 samples of 8 bits is wanted");

    static int32_t coefficients[kSide * kSide];
    for (int i = 0; i < picture.width * picture.height; ++i)
        coefficients[i] = inSignAndMagnitude(picture.samples[i] - 128);
    QelEncodeState* state;
    int planes, passes, segments, room = 4 * kSide * kSide, more;
    check(qeliEncodeInitAlloc_JPEG2K(&state, kSide, kSide));
    check(qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R(coefficients, picture.width * 4, picture.width, picture.height, state,
                                                 kLL, 31, 0, 0, kStyle | JPEG2K_LOSSLESS, &planes, &passes, &segments));
    uint8_t* bytes = take((size_t)room);
    check(qeliEncodeStoreBits_JPEG2K_1u(bytes, &room, state, &more));
    CodedBlock block = {kPlanes - planes, 0, 0, {0}, {0}, NULL};
    cutAtRate(state, passes, argc > 3 ? (uint32_t)atoi(argv[3]) : UINT32_MAX, bytes, &block);
    printf("%d zero bit planes, %d of %d passes kept\n", block.zeroPlanes, block.passes, passes);
    decodeBySegments(&block, &picture);

    Buffer packets = {NULL, 0, 0}, codestream = {NULL, 0, 0};
    writePacket(&packets, &block, 1);
    writeMainHeader(&codestream, &picture, kSide, 0, kBypassInCod);
    writeTile(&codestream, 0, &packets);
    writeCodestream(argv[2], &codestream);
    qeliEncodeFree_JPEG2K(state);
    free(packets.bytes), free(bytes), free(picture.samples);
    return 0;
}
