/* SPDX-License-Identifier: Apache-2.0 */
/* A baseline JPEG encoder: RGB to YCbCr with halved chroma (4:2:0), typical Huffman tables.
 *     baseline_encoder picture.ppm picture.jpg [quality]
 */
#include "t81.h"

#include <string.h>

enum { kSide = 16, kRoom = 1 << 16, kMcuAtMost = 6 * 513 };

typedef struct {
    FILE* file;
    uint16_t steps[2][64];         /* of luminance and chrominance, as the forward transform wants them */
    QelEncodeHuffmanSpec* spec[4]; /* by kLumaDc ... */
    QelEncodeHuffmanState* state;
    int16_t lastDc[3];
    uint8_t bytes[kRoom];
    int length; /* of what waits in bytes */
} Encoder;

static void writeHeaders(Encoder* e, int width, int height, int quality)
{
    static const uint8_t app0[14] = {'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1};
    const uint8_t sof0[15] = {8,
                              (uint8_t)(height >> 8),
                              (uint8_t)height,
                              (uint8_t)(width >> 8),
                              (uint8_t)width,
                              3,
                              1,
                              0x22,
                              0,
                              2,
                              0x11,
                              1,
                              3,
                              0x11,
                              1};
    static const uint8_t sos[10] = {3, 1, 0x00, 2, 0x11, 3, 0x11, 0, 63, 0};
    writeBytes(e->file, "\xFF\xD8", 2);
    writeSegment(e->file, 0xE0, app0, sizeof(app0));
    for (int table = 0; table < 2; ++table) {
        uint8_t raw[64];
        memcpy(raw, kTypicalSteps[table], 64);
        check(qeliQuantFwdRawTableInit_JPEG_8u(raw, quality));
        check(qeliQuantFwdTableInit_JPEG_8u16u(raw, e->steps[table]));
        writeSteps(e->file, table, raw);
    }
    writeSegment(e->file, 0xC0, sof0, sizeof(sof0));
    for (int i = 0; i < 4; ++i) {
        check(qeliEncodeHuffmanSpecInitAlloc_JPEG_8u(kTypicalBits[i], kTypicalValues[i], &e->spec[i]));
        writeHuffmanTable(e->file, i / 2, i % 2, kTypicalBits[i], kTypicalValues[i]);
    }
    writeSegment(e->file, 0xDA, sos, sizeof(sos));
}

/* The 16x16 pixels at column x, row y, repeating the last column and row where the picture ends. */
static void copyTile(const Pnm* picture, int x, int y, uint8_t tile[kSide][kSide * 3])
{
    for (int r = 0; r < kSide; ++r)
        for (int c = 0; c < kSide; ++c) {
            int row = y + r < picture->height ? y + r : picture->height - 1;
            int column = x + c < picture->width ? x + c : picture->width - 1;
            memcpy(tile[r] + 3 * c, picture->samples + 3 * ((size_t)row * picture->width + column), 3);
        }
}

static void encodeMcu(Encoder* e, const uint8_t* pixels, int step)
{
    int16_t blocks[6][64]; /* four of Y, one of Cb, one of Cr */
    int16_t* const components[3] = {blocks[0], blocks[4], blocks[5]};
    check(qeliRGBToYCbCr411LS_MCU_8u16s_C3P3R(pixels, step, components));
    for (int i = 0; i < 6; ++i) {
        int component = i < 4 ? 0 : i - 3, chroma = component > 0;
        check(qeliDCTQuantFwd8x8_JPEG_16s_C1I(blocks[i], e->steps[chroma]));
        check(qeliEncodeHuffman8x8_JPEG_16s1u_C1(blocks[i], e->bytes, kRoom, &e->length, &e->lastDc[component],
                                                 e->spec[kLumaDc + chroma], e->spec[kLumaAc + chroma], e->state, 0));
    }
    if (e->length > kRoom - kMcuAtMost) {
        writeBytes(e->file, e->bytes, (size_t)e->length);
        e->length = 0;
    }
}

static void encodeScan(Encoder* e, const Pnm* picture)
{
    int step = 3 * picture->width;
    uint8_t tile[kSide][kSide * 3];
    for (int y = 0; y < picture->height; y += kSide)
        for (int x = 0; x < picture->width; x += kSide)
            if (x + kSide <= picture->width && y + kSide <= picture->height) {
                encodeMcu(e, picture->samples + (size_t)y * step + 3 * x, step);
            } else {
                copyTile(picture, x, y, tile);
                encodeMcu(e, tile[0], sizeof(tile[0]));
            }
    /* The flush fills the last byte; it looks at the buffer and the state alone. */
    check(qeliEncodeHuffman8x8_JPEG_16s1u_C1(NULL, e->bytes, kRoom, &e->length, NULL, NULL, NULL, e->state, 1));
    writeBytes(e->file, e->bytes, (size_t)e->length);
    writeBytes(e->file, "\xFF\xD9", 2);
}

int main(int argc, char** argv)
{
    static Encoder e;
    if (argc < 3) fail("usage: baseline_encoder picture.ppm picture.jpg [quality]");
    Pnm picture = readPnm(argv[1]);
    if (picture.channels != 3 || picture.maximum != 255) fail("a PPM file with a maximum of 255 is wanted");
    e.file = openFile(argv[2], "wb");
    check(qeliEncodeHuffmanStateInitAlloc_JPEG_8u(&e.state));
    writeHeaders(&e, picture.width, picture.height, argc > 3 ? atoi(argv[3]) : 90);
    encodeScan(&e, &picture);
    closeWritten(e.file);
    for (int i = 0; i < 4; ++i) qeliEncodeHuffmanSpecFree_JPEG_8u(e.spec[i]);
    qeliEncodeHuffmanStateFree_JPEG_8u(e.state);
    free(picture.samples);
    return 0;
}
