/* SPDX-License-Identifier: Apache-2.0 */
/* A decoder of baseline JPEG that takes its input as it comes, so many bytes at a time, and goes on behind damage at
 * the next restart marker. Grey and YCbCr files with 4:4:4, 4:2:2 or 4:2:0 sampling.
 *     decoder picture.jpg picture.ppm [bytes]
 */
#include "common.h"

#include <string.h>

enum { kMostComponents = 3, kMostBlocks = 6, kMostPixels = 1 << 28 };

typedef struct {
    FILE* file;
    uint8_t* bytes; /* what has come and is not done with */
    int position, length, room;
    int piece; /* bytes that come at a time */
} Input;

typedef struct {
    int blocks, dc, ac, steps; /* blocks in an MCU, numbers of the tables */
    int16_t lastDc;
} Component;

typedef struct {
    Input in;
    int width, height, components, interval; /* MCUs between restart markers, 0 for none */
    int mcuWidth, mcuHeight, mcusInRow, mcus;
    Component component[kMostComponents];
    uint16_t steps[4][64];
    QelDecodeHuffmanSpec* spec[2][4]; /* by class and number */
    QelDecodeHuffmanState* state;
    void* savedState;
    int stateSize;
    uint32_t marker;
    uint8_t* pixels; /* whole MCUs */
    int step;
} Decoder;

/* More bytes behind those that are not done with; 0 at the end of the file. */
static int readPiece(Input* in)
{
    int left = in->length - in->position;
    if (left > 0) memmove(in->bytes, in->bytes + in->position, (size_t)left);
    if (left + in->piece > in->room) {
        in->room = 2 * (left + in->piece);
        in->bytes = realloc(in->bytes, (size_t)in->room);
        if (!in->bytes) fail("there is not enough memory");
    }
    int came = (int)fread(in->bytes + left, 1, (size_t)in->piece, in->file);
    in->position = 0;
    in->length = left + came;
    return came > 0;
}

static const uint8_t* next(Input* in, int count)
{
    while (in->length - in->position < count)
        if (!readPiece(in)) fail("the file ends too soon");
    in->position += count;
    return in->bytes + in->position - count;
}

/* The code of the next marker, wherever it is: 0xFF, then neither 0 nor 0xFF. 0 at the end of the file. */
static int nextMarker(Input* in)
{
    for (;;) {
        while (in->length - in->position < 2)
            if (!readPiece(in)) return 0;
        const uint8_t* at = in->bytes + in->position;
        if (at[0] == 0xFF && at[1] != 0 && at[1] != 0xFF) return next(in, 2)[1];
        ++in->position;
    }
}

static void readSteps(Decoder* d, const uint8_t* at, const uint8_t* end)
{
    for (; end - at >= 65; at += 65) {
        if (at[0] > 3) fail("a quantization table that baseline files do not have");
        check(qeliQuantInvTableInit_JPEG_8u16u(at + 1, d->steps[at[0]]));
    }
}

static void readHuffmanTables(Decoder* d, const uint8_t* at, const uint8_t* end)
{
    while (end - at >= 17) {
        int count = 0, class = at[0] >> 4, table = at[0] & 15;
        for (int i = 1; i <= 16; ++i) count += at[i];
        if (class > 1 || table > 3 || count > 256 || end - at < 17 + count) fail("a damaged Huffman table");
        QelDecodeHuffmanSpec** spec = &d->spec[class][table];
        if (*spec) qeliDecodeHuffmanSpecFree_JPEG_8u(*spec);
        check(qeliDecodeHuffmanSpecInitAlloc_JPEG_8u(at + 1, at + 17, spec));
        at += 17 + count;
    }
}

static void readFrame(Decoder* d, const uint8_t* at, int count)
{
    if (d->pixels || count < 6 || at[0] != 8 || (at[5] != 1 && at[5] != 3) || count < 6 + 3 * at[5])
        fail("not one frame of 8 bits and 1 or 3 components");
    int first = at[5] == 1 ? 0x11 : at[7]; /* sampling matters where there are others to compare with */
    d->height = at[1] << 8 | at[2], d->width = at[3] << 8 | at[4], d->components = at[5];
    if (d->width < 1 || d->height < 1 || d->width > kMostPixels / d->height) fail("an empty or a huge picture");
    for (int i = 0; i < d->components; ++i) {
        if (i > 0 && at[7 + 3 * i] != 0x11) fail("chroma has an unusual sampling");
        d->component[i].blocks = 1;
        d->component[i].steps = at[8 + 3 * i] & 3;
    }
    if (first != 0x11 && first != 0x21 && first != 0x22) fail("luminance has an unusual sampling");
    d->component[0].blocks = (first >> 4) * (first & 15);
    d->mcuWidth = 8 * (first >> 4), d->mcuHeight = 8 * (first & 15);
    d->mcusInRow = (d->width + d->mcuWidth - 1) / d->mcuWidth;
    d->mcus = d->mcusInRow * ((d->height + d->mcuHeight - 1) / d->mcuHeight);
    d->step = d->mcusInRow * d->mcuWidth * d->components;
    size_t size = (size_t)d->mcus * d->mcuWidth * d->mcuHeight * d->components;
    d->pixels = take(size);
    memset(d->pixels, 128, size); /* what is lost stays grey */
}

static void readScanHeader(Decoder* d, const uint8_t* at, int count)
{
    if (!d->pixels || count != 4 + 2 * d->components || at[0] != d->components) fail("not all components in one scan");
    for (int i = 0; i < d->components; ++i) {
        Component* component = &d->component[i];
        component->dc = at[2 + 2 * i] >> 4 & 3, component->ac = at[2 + 2 * i] & 3;
        if (!d->spec[0][component->dc] || !d->spec[1][component->ac]) fail("a Huffman table is missing");
    }
}

/* All segments up to the data of the scan. */
static void readHeaders(Decoder* d)
{
    int marker;
    do {
        marker = nextMarker(&d->in);
        if (marker == 0 || marker == 0xD9) fail("the file has no scan");
        if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8)) continue; /* no segment follows these */
        const uint8_t* length = next(&d->in, 2);
        int count = (length[0] << 8 | length[1]) - 2;
        if (count < 0) fail("a damaged segment");
        const uint8_t* at = next(&d->in, count);
        if (marker == 0xDB) readSteps(d, at, at + count);
        if (marker == 0xC4) readHuffmanTables(d, at, at + count);
        if (marker == 0xC0 || marker == 0xC1) readFrame(d, at, count);
        if (marker == 0xDD && count == 2) d->interval = at[0] << 8 | at[1];
        if (marker == 0xDA) readScanHeader(d, at, count);
        if (marker >= 0xC2 && marker <= 0xCF && marker != 0xC4) fail("not a baseline file");
    } while (marker != 0xDA);
}

/* The blocks of one MCU from what has come so far. */
static QelStatus decodeBlocks(Decoder* d, int16_t blocks[kMostBlocks][64])
{
    for (int c = 0, block = 0; c < d->components; ++c) {
        Component* component = &d->component[c];
        for (int i = 0; i < component->blocks; ++i, ++block) {
            QelStatus status = qeliDecodeHuffman8x8_JPEG_1u16s_C1(
                d->in.bytes, d->in.length, &d->in.position, blocks[block], &component->lastDc, &d->marker,
                d->spec[0][component->dc], d->spec[1][component->ac], d->state);
            if (status < 0) return status;
        }
    }
    return qelStsNoErr;
}

/* As above; where bytes lack, more are read and the MCU is decoded again, from a copy of what it had begun with. */
static int decodeMcu(Decoder* d, int16_t blocks[kMostBlocks][64])
{
    Component component[kMostComponents];
    memcpy(d->savedState, d->state, (size_t)d->stateSize);
    memcpy(component, d->component, sizeof(component));
    for (;;) {
        int position = d->in.position;
        QelStatus status = decodeBlocks(d, blocks);
        if (status >= 0) return 1;
        if (status != qelStsJPEGOutOfBufErr || d->marker) return 0;
        d->in.position = position;
        if (!readPiece(&d->in)) return 0;
        memcpy(d->state, d->savedState, (size_t)d->stateSize);
        memcpy(d->component, component, sizeof(component));
    }
}

static void putPixels(Decoder* d, int mcu, int16_t blocks[kMostBlocks][64])
{
    const int16_t* const planes[3] = {blocks[0], blocks[d->component[0].blocks], blocks[d->component[0].blocks + 1]};
    uint8_t* to = d->pixels + (size_t)(mcu / d->mcusInRow) * d->mcuHeight * d->step +
                  (size_t)(mcu % d->mcusInRow) * d->mcuWidth * d->components;
    if (d->components == 1) {
        check(qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R(blocks[0], to, d->step, d->steps[d->component[0].steps]));
        return;
    }
    for (int c = 0, block = 0; c < 3; ++c)
        for (int i = 0; i < d->component[c].blocks; ++i, ++block)
            check(qeliDCTQuantInv8x8_JPEG_16s_C1I(blocks[block], d->steps[d->component[c].steps]));
    check((d->component[0].blocks == 1   ? qeliYCbCr444ToRGBLS_MCU_16s8u_P3C3R
           : d->component[0].blocks == 2 ? qeliYCbCr422ToRGBLS_MCU_16s8u_P3C3R
                                         : qeliYCbCr411ToRGBLS_MCU_16s8u_P3C3R)(planes, to, d->step));
}

/* Interval by interval. Returns how many MCUs are lost. */
static int decodeScan(Decoder* d)
{
    int16_t blocks[kMostBlocks][64];
    int lost = 0, restarts = 0;
    for (int mcu = 0; mcu < d->mcus;) {
        int end = d->interval && d->interval < d->mcus - mcu ? mcu + d->interval : d->mcus;
        d->marker = 0;
        check(qeliDecodeHuffmanStateInit_JPEG_8u(d->state));
        for (int i = 0; i < d->components; ++i) d->component[i].lastDc = 0;
        for (; mcu < end && decodeMcu(d, blocks); ++mcu) putPixels(d, mcu, blocks);
        lost += end - mcu;
        if (end == d->mcus) break;
        /* The number of the next restart marker tells whether intervals between are missing. */
        int marker = d->marker ? (int)d->marker : nextMarker(&d->in);
        while (marker != 0 && marker != 0xD9 && (marker < 0xD0 || marker > 0xD7)) marker = nextMarker(&d->in);
        int missing = marker == 0 || marker == 0xD9 ? d->mcus : ((marker - 0xD0 - restarts) & 7) * d->interval;
        if (missing > d->mcus - end) missing = d->mcus - end;
        restarts += 1 + (d->interval ? missing / d->interval : 0);
        lost += missing;
        mcu = end + missing;
    }
    return lost;
}

int main(int argc, char** argv)
{
    static Decoder d;
    if (argc < 3) fail("usage: decoder picture.jpg picture.ppm [bytes]");
    d.in.piece = argc > 3 ? atoi(argv[3]) : 1000;
    if (d.in.piece < 1 || d.in.piece > 1 << 20) fail("pieces have 1 to 1048576 bytes");
    d.in.file = openFile(argv[1], "rb");
    check(qeliDecodeHuffmanStateInitAlloc_JPEG_8u(&d.state));
    check(qeliDecodeHuffmanStateGetBufSize_JPEG_8u(&d.stateSize));
    d.savedState = take((size_t)d.stateSize);
    readHeaders(&d);
    int lost = decodeScan(&d);
    writePnm(argv[2], d.pixels, d.step, d.width, d.height, d.components);
    if (lost) fprintf(stderr, "%d of %d MCUs are lost\n", lost, d.mcus);
    for (int i = 0; i < 8; ++i)
        if (d.spec[i / 4][i % 4]) qeliDecodeHuffmanSpecFree_JPEG_8u(d.spec[i / 4][i % 4]);
    qeliDecodeHuffmanStateFree_JPEG_8u(d.state);
    fclose(d.in.file);
    free(d.savedState);
    free(d.in.bytes);
    free(d.pixels);
    return lost ? 3 : 0;
}
