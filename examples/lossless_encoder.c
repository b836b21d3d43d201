/* SPDX-License-Identifier: Apache-2.0 */
/* A lossless JPEG encoder: every sample of a grey picture, of up to 16 bits, as its difference from what its neighbours
 * predict, with a Huffman table made for these differences.
 *     lossless_encoder picture.pgm picture.jpg [predictor]
 */
#include "t81.h"

enum { kRoom = 1 << 16, kDifferenceAtMost = 8 };

typedef struct {
    int width, height, precision, predictor;
    int16_t* rows[2];     /* of samples, in turns: the one being coded, and the one above */
    int16_t* differences; /* of a row */
    QelEncodeHuffmanSpec* spec;
    QelEncodeHuffmanState* state;
    FILE* file;
    uint8_t bytes[kRoom];
    int length; /* of what waits in bytes */
} Encoder;

/* The differences of row y; rows are asked for in order. */
static void predictRow(Encoder* e, const Pnm* picture, int y)
{
    int16_t *row = e->rows[y % 2], *above = e->rows[1 - y % 2];
    size_t at = (size_t)y * e->width;
    for (int x = 0; x < e->width; ++x, ++at)
        row[x] = picture->maximum < 256 ? picture->samples[at]
                                        : (int16_t)(picture->samples[2 * at] << 8 | picture->samples[2 * at + 1]);
    if (y == 0)
        check(qeliDiffPredFirstRow_JPEG_16s_C1(row, e->differences, e->width, e->precision, 0));
    else
        check(qeliDiffPredRow_JPEG_16s_C1(row, above, e->differences, e->width, e->predictor));
}

static void flushBytes(Encoder* e)
{
    writeBytes(e->file, e->bytes, (size_t)e->length);
    e->length = 0;
}

/* The first of two passes: how often each category of differences comes, and the table for that. */
static void makeTable(Encoder* e, const Pnm* picture, uint8_t bits[16], uint8_t values[256])
{
    uint32_t statistics[256] = {0};
    for (int y = 0; y < e->height; ++y) {
        predictRow(e, picture, y);
        for (int x = 0; x < e->width; ++x)
            check(qeliGetHuffmanStatisticsOne_JPEG_16s_C1(&e->differences[x], statistics));
    }
    check(qeliEncodeHuffmanRawTableInit_JPEG_8u(statistics, bits, values));
    check(qeliEncodeHuffmanSpecInitAlloc_JPEG_8u(bits, values, &e->spec));
}

static void writeScan(Encoder* e, const Pnm* picture)
{
    for (int y = 0; y < e->height; ++y) {
        predictRow(e, picture, y);
        for (int x = 0; x < e->width; ++x) {
            check(qeliEncodeHuffmanOne_JPEG_16s1u_C1(&e->differences[x], e->bytes, kRoom, &e->length, e->spec, e->state,
                                                     0));
            if (e->length > kRoom - kDifferenceAtMost) flushBytes(e);
        }
    }
    /* What is left in the state, filled up with ones. */
    check(qeliEncodeHuffmanOne_JPEG_16s1u_C1(NULL, e->bytes, kRoom, &e->length, NULL, e->state, 1));
    flushBytes(e);
}

static void writeFile(Encoder* e, const Pnm* picture)
{
    uint8_t bits[16], values[256];
    const uint8_t sof3[9] = {(uint8_t)e->precision,
                             (uint8_t)(e->height >> 8),
                             (uint8_t)e->height,
                             (uint8_t)(e->width >> 8),
                             (uint8_t)e->width,
                             1,
                             1,
                             0x11,
                             0};
    const uint8_t sos[6] = {1, 1, 0, (uint8_t)e->predictor, 0, 0};
    makeTable(e, picture, bits, values);
    writeBytes(e->file, "\xFF\xD8", 2);
    writeHuffmanTable(e->file, 0, 0, bits, values);
    writeSegment(e->file, 0xC3, sof3, sizeof(sof3));
    writeSegment(e->file, 0xDA, sos, sizeof(sos));
    writeScan(e, picture);
    writeBytes(e->file, "\xFF\xD9", 2);
}

int main(int argc, char** argv)
{
    static Encoder e;
    if (argc < 3) fail("usage: lossless_encoder picture.pgm picture.jpg [predictor]");
    Pnm picture = readPnm(argv[1]);
    if (picture.channels != 1) fail("a PGM file is wanted");
    e.width = picture.width, e.height = picture.height;
    e.predictor = argc > 3 ? atoi(argv[3]) : 4;
    /* Samples of 16 bits are read as signed ones here. Predictors 1 to 4 are the same for either, 5 to 7 are not. */
    if (e.predictor < 1 || e.predictor > (picture.maximum > 32767 ? 4 : 7))
        fail("the predictor is 1 to 7, or 1 to 4 for samples of 16 bits");
    for (e.precision = 2; picture.maximum >> e.precision; ++e.precision) {}
    for (int i = 0; i < 2; ++i) e.rows[i] = take((size_t)e.width * sizeof(int16_t));
    e.differences = take((size_t)e.width * sizeof(int16_t));
    check(qeliEncodeHuffmanStateInitAlloc_JPEG_8u(&e.state));
    e.file = openFile(argv[2], "wb");
    writeFile(&e, &picture);
    closeWritten(e.file);
    qeliEncodeHuffmanSpecFree_JPEG_8u(e.spec);
    qeliEncodeHuffmanStateFree_JPEG_8u(e.state);
    free(e.rows[0]), free(e.rows[1]), free(e.differences), free(picture.samples);
    return 0;
}
