/* SPDX-License-Identifier: Apache-2.0 */
/* A progressive JPEG encoder whose Huffman tables are made for the picture: each scan is walked twice, first to count
 * its symbols, then to write them. Full chroma (4:4:4).
 *     progressive_encoder picture.ppm picture.jpg [quality]
 */
#include "t81.h"

#include <string.h>

enum { kRoom = 1 << 16, kBlockAtMost = 1 << 11 };

/* A scan: its components, band, and the low bits that the scans before left out (ah) and that it leaves out (al). */
typedef struct {
    int first, count, ss, se, ah, al;
} Scan;

static const Scan kScans[] = {{0, 3, 0, 0, 0, 1}, /* DC but for the last bit */
                              {0, 1, 1, 5, 0, 2},  {2, 1, 1, 63, 0, 1}, {1, 1, 1, 63, 0, 1},
                              {0, 1, 6, 63, 0, 2}, /* AC, coarsely */
                              {0, 1, 1, 63, 2, 1}, /* the next bit of luminance */
                              {0, 3, 0, 0, 1, 0},  /* the last bits */
                              {2, 1, 1, 63, 1, 0}, {1, 1, 1, 63, 1, 0}, {0, 1, 1, 63, 1, 0}};

typedef struct {
    FILE* file;
    int across, blocks;       /* blocks in a row, and of a component */
    int16_t* coefficients[3]; /* 64 for each block */
    QelEncodeHuffmanState* state;
    QelEncodeHuffmanSpec* spec; /* of the scan that is written */
    int16_t lastDc[3];
    uint8_t bytes[kRoom];
    int length; /* of what waits in bytes */
} Encoder;

static void writeTables(Encoder* e, int quality, uint16_t steps[2][64])
{
    for (int table = 0; table < 2; ++table) {
        uint8_t raw[64];
        memcpy(raw, kTypicalSteps[table], 64);
        check(qeliQuantFwdRawTableInit_JPEG_8u(raw, quality));
        check(qeliQuantFwdTableInit_JPEG_8u16u(raw, steps[table]));
        writeSteps(e->file, table, raw);
    }
}

/* Colours of the whole picture, then the blocks of each plane. The planes' last column and row are repeated. */
static void transform(Encoder* e, const Pnm* picture, uint16_t steps[2][64])
{
    int width = 8 * e->across, height = 8 * (e->blocks / e->across);
    uint8_t* planes[3];
    QelSize size = {picture->width, picture->height};
    for (int c = 0; c < 3; ++c) planes[c] = take((size_t)width * height);
    check(qeliRGBToYCbCr_JPEG_8u_C3P3R(picture->samples, 3 * picture->width, planes, width, size));
    for (int c = 0; c < 3; ++c) {
        for (int y = 0; y < height; ++y) {
            uint8_t* row = planes[c] + (size_t)y * width;
            if (y >= size.height)
                memcpy(row, row - width, (size_t)width);
            else
                memset(row + size.width, row[size.width - 1], (size_t)(width - size.width));
        }
        e->coefficients[c] = take((size_t)e->blocks * 64 * sizeof(int16_t));
        for (int b = 0; b < e->blocks; ++b) {
            const uint8_t* at = planes[c] + (size_t)(b / e->across) * 8 * width + 8 * (b % e->across);
            check(qeliDCTQuantFwd8x8LS_JPEG_8u16s_C1R(at, width, e->coefficients[c] + 64 * (size_t)b, steps[c > 0]));
        }
        free(planes[c]);
    }
}

/* One block of a scan, or with a null block the end of the scan: its symbols are counted, where there are statistics,
 * or else written. */
static void codeBlock(Encoder* e, const Scan* s, int c, int16_t* block, uint32_t* statistics)
{
    int flush = !block;
    if (statistics && s->ss > 0)
        check((s->ah ? qeliGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1
                     : qeliGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1)(block, statistics, s->ss, s->se, s->al,
                                                                        e->state, flush));
    else if (statistics && !s->ah && !flush)
        check(qeliGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(block, statistics, &e->lastDc[c], s->al));
    if (statistics) return;

    if (s->ss > 0)
        check((s->ah ? qeliEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1 : qeliEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1)(
            block, e->bytes, kRoom, &e->length, s->ss, s->se, s->al, e->spec, e->state, flush));
    else if (s->ah)
        check(qeliEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(block, e->bytes, kRoom, &e->length, s->al, e->state, flush));
    else
        check(qeliEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(block, e->bytes, kRoom, &e->length, &e->lastDc[c], s->al,
                                                         e->spec, e->state, flush));
    if (flush || e->length > kRoom - kBlockAtMost) {
        writeBytes(e->file, e->bytes, (size_t)e->length);
        e->length = 0;
    }
}

static void walk(Encoder* e, const Scan* s, uint32_t* statistics)
{
    memset(e->lastDc, 0, sizeof(e->lastDc));
    check(qeliEncodeHuffmanStateInit_JPEG_8u(e->state));
    for (int b = 0; b < e->blocks; ++b)
        for (int c = s->first; c < s->first + s->count; ++c)
            codeBlock(e, s, c, e->coefficients[c] + 64 * (size_t)b, statistics);
    codeBlock(e, s, s->first, NULL, statistics);
}

static void encodeScan(Encoder* e, const Scan* s)
{
    uint32_t statistics[256] = {0};
    uint8_t bits[16], values[256], header[10] = {(uint8_t)s->count};
    walk(e, s, statistics);
    check(qeliEncodeHuffmanRawTableInit_JPEG_8u(statistics, bits, values));
    check(qeliEncodeHuffmanSpecInitAlloc_JPEG_8u(bits, values, &e->spec));
    if (s->ss > 0 || !s->ah) writeHuffmanTable(e->file, s->ss > 0, 0, bits, values);
    for (int i = 0; i < s->count; ++i) header[1 + 2 * i] = (uint8_t)(s->first + i + 1);
    uint8_t* band = header + 1 + 2 * s->count;
    band[0] = (uint8_t)s->ss, band[1] = (uint8_t)s->se, band[2] = (uint8_t)(s->ah << 4 | s->al);
    writeSegment(e->file, 0xDA, header, 4 + 2 * s->count);
    walk(e, s, NULL);
    check(qeliEncodeHuffmanSpecFree_JPEG_8u(e->spec));
}

int main(int argc, char** argv)
{
    static Encoder e;
    uint16_t steps[2][64];
    if (argc < 3) fail("usage: progressive_encoder picture.ppm picture.jpg [quality]");
    Pnm picture = readPnm(argv[1]);
    if (picture.channels != 3 || picture.maximum != 255) fail("a PPM file with a maximum of 255 is wanted");
    int width = picture.width, height = picture.height;
    const uint8_t sof2[15] = {8,
                              (uint8_t)(height >> 8),
                              (uint8_t)height,
                              (uint8_t)(width >> 8),
                              (uint8_t)width,
                              3,
                              1,
                              0x11,
                              0,
                              2,
                              0x11,
                              1,
                              3,
                              0x11,
                              1};
    e.file = openFile(argv[2], "wb");
    e.across = (width + 7) / 8;
    e.blocks = e.across * ((height + 7) / 8);
    check(qeliEncodeHuffmanStateInitAlloc_JPEG_8u(&e.state));
    writeBytes(e.file, "\xFF\xD8", 2);
    writeTables(&e, argc > 3 ? atoi(argv[3]) : 90, steps);
    writeSegment(e.file, 0xC2, sof2, sizeof(sof2));
    transform(&e, &picture, steps);
    for (size_t i = 0; i < sizeof(kScans) / sizeof(kScans[0]); ++i) encodeScan(&e, &kScans[i]);
    writeBytes(e.file, "\xFF\xD9", 2);
    closeWritten(e.file);
    for (int c = 0; c < 3; ++c) free(e.coefficients[c]);
    qeliEncodeHuffmanStateFree_JPEG_8u(e.state);
    free(picture.samples);
    return 0;
}
