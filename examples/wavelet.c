/* SPDX-License-Identifier: Apache-2.0 */
/* Three levels of the reversible wavelet, tile by tile: a lossless JPEG 2000 encoder of grey and RGB pictures.
 *     wavelet picture.ppm picture.j2c
 */
#include "t800.h"

enum { kTile = 128, kLevels = 3, kBlock = 64, kLL = 0, kLH = 1, kHL = 2, kHH = 3, kRoom = 1 << 15 };

typedef struct {
    QelRect rect;                      /* of the tile in the picture */
    int32_t samples[3][kTile * kTile]; /* rows are kTile samples apart, then coefficients */
    QelEncodeState* state;
    uint8_t bytes[3][kRoom]; /* of the code-blocks of a packet */
} Tile;

/* Samples around 0; RGB becomes one luminance and two differences, which are the same for all colours of a grey. */
static void loadTile(Tile* tile, const Pnm* picture)
{
    QelSize size = {tile->rect.width, tile->rect.height};
    int32_t* const planes[3] = {tile->samples[0], tile->samples[1], tile->samples[2]};
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width * picture->channels; ++x) {
            size_t row = ((size_t)(tile->rect.y + y) * picture->width + tile->rect.x) * picture->channels;
            planes[x % picture->channels][y * kTile + x / picture->channels] = picture->samples[row + x] - 128;
        }
    if (picture->channels == 3) check(qeliRCTFwd_JPEG2K_32s_P3IR(planes, kTile * 4, size));
}

/* Each level takes the low-low quarter of the one before, which it has left in the upper left. */
static void transform(int32_t* samples, QelRect rect)
{
    int size;
    for (int level = 0; level < kLevels; ++level) {
        check(qeliWTGetBufSize_B53_JPEG2K_32s_C1IR(&rect, &size));
        uint8_t* buffer = take((size_t)size);
        check(qeliWTFwd_B53_JPEG2K_32s_C1IR(samples, kTile * 4, &rect, buffer));
        free(buffer);
        /* Tiles begin at even places on every level, so that the low half is the larger one. */
        rect.x /= 2, rect.y /= 2, rect.width = (rect.width + 1) / 2, rect.height = (rect.height + 1) / 2;
    }
}

/* A subband, of at most 64x64 coefficients, is one code-block with one segment. */
static void encodeBlock(Tile* tile, const int32_t* from, QelSize size, int band, int planes, uint8_t* bytes,
                        CodedBlock* block)
{
    static int32_t coefficients[kBlock * kBlock];
    int used, segments, length = kRoom, more;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            int32_t value = from[y * kTile + x];
            coefficients[y * kBlock + x] = value < 0 ? (int32_t)(0x80000000u | (uint32_t)-value) : value;
        }
    check(qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R(coefficients, kBlock * 4, size.width, size.height, tile->state, band,
                                                 31, 0, 0, JPEG2K_LOSSLESS, &used, &block->passes, &segments));
    check(qeliEncodeStoreBits_JPEG2K_1u(bytes, &length, tile->state, &more));
    if (more) fail("a code-block is larger than expected");
    block->zeroPlanes = planes - used;
    block->segments = segments;
    block->passesIn[0] = block->passes;
    block->lengths[0] = length;
    block->bytes = bytes;
}

/* The packet of one component at one resolution: its low-low subband, or the three others of a level. */
static void encodePacket(Tile* tile, int component, int resolution, int transforms, Buffer* packets)
{
    int level = resolution == 0 ? kLevels : kLevels - resolution + 1, planes = 8 + kGuardBits - 1 + transforms;
    int width = tile->rect.width, height = tile->rect.height, count = 0;
    CodedBlock blocks[3];
    for (int i = 1; i < level; ++i) width = (width + 1) / 2, height = (height + 1) / 2;
    static const int kBands[2][3] = {{kLL}, {kHL, kLH, kHH}}; /* in the order of a packet */
    for (int i = 0; i < (resolution == 0 ? 1 : 3); ++i) {
        int band = kBands[resolution > 0][i], right = band & kHL, below = band & kLH;
        QelSize size = {right ? width / 2 : (width + 1) / 2, below ? height / 2 : (height + 1) / 2};
        if (size.width == 0 || size.height == 0) continue; /* no code-block, and not a word of it */
        const int32_t* from =
            tile->samples[component] + (below ? (height + 1) / 2 * kTile : 0) + (right ? (width + 1) / 2 : 0);
        int gain = band == kLL ? 0 : band == kHH ? 2 : 1;
        encodeBlock(tile, from, size, band, planes + gain, tile->bytes[count], &blocks[count]);
        ++count;
    }
    writePacket(packets, blocks, count);
}

int main(int argc, char** argv)
{
    static Tile tile;
    if (argc < 3) fail("usage: wavelet picture.ppm picture.j2c");
    Pnm picture = readPnm(argv[1]);
    if (picture.maximum != 255) fail("a PGM or PPM file with a maximum of 255 is wanted");
    Buffer codestream = {NULL, 0, 0}, packets = {NULL, 0, 0};
    int across = (picture.width + kTile - 1) / kTile, down = (picture.height + kTile - 1) / kTile;
    if (across * down > 65535) fail("the picture has too many tiles");
    check(qeliEncodeInitAlloc_JPEG2K(&tile.state, kBlock, kBlock));
    writeMainHeader(&codestream, &picture, kTile, kLevels, 0);
    for (int t = 0; t < across * down; ++t) {
        int x = t % across * kTile, y = t / across * kTile;
        QelRect rect = {x, y, picture.width - x, picture.height - y};
        if (rect.width > kTile) rect.width = kTile;
        if (rect.height > kTile) rect.height = kTile;
        tile.rect = rect;
        loadTile(&tile, &picture);
        for (int c = 0; c < picture.channels; ++c) transform(tile.samples[c], rect);
        packets.length = 0;
        for (int r = 0; r <= kLevels; ++r)
            for (int c = 0; c < picture.channels; ++c) encodePacket(&tile, c, r, picture.channels == 3, &packets);
        writeTile(&codestream, t, &packets);
    }
    writeCodestream(argv[2], &codestream);
    qeliEncodeFree_JPEG2K(tile.state);
    free(packets.bytes), free(picture.samples);
    return 0;
}
