/* SPDX-License-Identifier: Apache-2.0 */
/* What a JPEG 2000 codestream needs around its code-blocks (T.800 Annexes A and B): markers, and packets of one layer
 * whose subbands have one code-block each. */
#ifndef EXAMPLES_T800_H
#define EXAMPLES_T800_H

#include "common.h"

enum { kGuardBits = 2, kMostSegments = 64 };

/* Bytes in memory. */
typedef struct {
    uint8_t* bytes;
    int length, room;
} Buffer;

static inline uint8_t* append(Buffer* buffer, int count)
{
    if (buffer->room - buffer->length < count) {
        buffer->room = 2 * (buffer->length + count);
        buffer->bytes = realloc(buffer->bytes, (size_t)buffer->room);
        if (!buffer->bytes) fail("there is not enough memory");
    }
    buffer->length += count;
    return buffer->bytes + buffer->length - count;
}

/* The lowest `count` bytes of a value, the highest of them first. */
static inline void put(Buffer* buffer, int count, uint32_t value)
{
    uint8_t* at = append(buffer, count);
    for (int i = 0; i < count; ++i) at[i] = (uint8_t)(value >> 8 * (count - 1 - i));
}

/* Bits of a packet header: behind a byte 0xFF the next one begins with a 0 (B.10.1). */
typedef struct {
    Buffer* to;
    int bits, room; /* of the byte that is being filled */
} BitWriter;

static inline void putBits(BitWriter* writer, int count, int value)
{
    while (count-- > 0) {
        writer->bits = writer->bits << 1 | (value >> count & 1);
        if (--writer->room > 0) continue;
        put(writer->to, 1, (uint32_t)writer->bits);
        writer->room = writer->bits == 0xFF ? 7 : 8;
        writer->bits = 0;
    }
}

/* A code-block of a packet. */
typedef struct {
    int zeroPlanes, passes, segments;
    int passesIn[kMostSegments], lengths[kMostSegments];
    const uint8_t* bytes; /* segment behind segment */
} CodedBlock;

/* The number of passes (Table B.4). */
static inline void putPasses(BitWriter* writer, int passes)
{
    if (passes <= 2)
        putBits(writer, passes, passes == 1 ? 0 : 2);
    else if (passes <= 5)
        putBits(writer, 4, 12 + passes - 3);
    else if (passes <= 36)
        putBits(writer, 9, 15 << 5 | (passes - 6));
    else
        putBits(writer, 16, 511 << 7 | (passes - 37));
}

static inline int log2Floor(int value)
{
    int log = 0;
    while (value >> (log + 1)) ++log;
    return log;
}

/* Lblock begins at 3 and grows until every length has room (B.10.7). */
static inline void putLengths(BitWriter* writer, const CodedBlock* block)
{
    int lblock = 3;
    for (int i = 0; i < block->segments; ++i)
        while (block->lengths[i] >> (lblock + log2Floor(block->passesIn[i]))) ++lblock;
    for (int i = 3; i < lblock; ++i) putBits(writer, 1, 1);
    putBits(writer, 1, 0);
    for (int i = 0; i < block->segments; ++i)
        putBits(writer, lblock + log2Floor(block->passesIn[i]), block->lengths[i]);
}

/* A packet: of each block whether it is there, its zero bit planes, passes and lengths; then the bytes. A tag tree of
 * one block is its value in zeros, and a one. */
static inline void writePacket(Buffer* to, const CodedBlock* blocks, int count)
{
    BitWriter writer = {to, 0, 8};
    putBits(&writer, 1, 1);
    for (const CodedBlock* block = blocks; block < blocks + count; ++block) {
        putBits(&writer, 1, block->passes > 0);
        if (block->passes == 0) continue;
        for (int i = 0; i < block->zeroPlanes; ++i) putBits(&writer, 1, 0);
        putBits(&writer, 1, 1);
        putPasses(&writer, block->passes);
        putLengths(&writer, block);
    }
    while (writer.room < 8) putBits(&writer, 1, 0); /* a last byte 0xFF gets one behind it, too */
    for (const CodedBlock* block = blocks; block < blocks + count; ++block) {
        const uint8_t* from = block->bytes;
        for (int i = 0; i < block->segments; ++i)
            for (int n = 0; n < block->lengths[i]; ++n) put(to, 1, *from++);
    }
}

/* The main header of a reversible picture of 8-bit samples, in tiles: SIZ, COD and QCD (A.5.1, A.6.1, A.6.4). The
 * planes of a subband are kGuardBits - 1 more than 8, its gain of 0 (LL), 1 or 2 (HH), and 1 for the component
 * transform's differences. */
static inline void writeMainHeader(Buffer* to, const Pnm* picture, int tile, int levels, int style)
{
    int transforms = picture->channels == 3;
    put(to, 2, 0xFF4F), put(to, 2, 0xFF51), put(to, 2, (uint32_t)(38 + 3 * picture->channels)), put(to, 2, 0);
    put(to, 4, (uint32_t)picture->width), put(to, 4, (uint32_t)picture->height), put(to, 4, 0), put(to, 4, 0);
    put(to, 4, (uint32_t)tile), put(to, 4, (uint32_t)tile), put(to, 4, 0), put(to, 4, 0);
    put(to, 2, (uint32_t)picture->channels);
    for (int c = 0; c < picture->channels; ++c) put(to, 3, 0x070101);

    put(to, 2, 0xFF52), put(to, 2, 12), put(to, 2, 0), put(to, 2, 1), put(to, 1, (uint32_t)transforms);
    put(to, 1, (uint32_t)levels), put(to, 2, 0x0404), put(to, 1, (uint32_t)style), put(to, 1, 1);

    put(to, 2, 0xFF5C), put(to, 2, (uint32_t)(4 + 3 * levels)), put(to, 1, kGuardBits << 5);
    for (int band = 0; band <= 3 * levels; ++band) {
        int gain = band == 0 ? 0 : band % 3 == 0 ? 2 : 1;
        put(to, 1, (uint32_t)(8 + gain + transforms) << 3);
    }
}

/* A tile-part with all packets of a tile: SOT and SOD (A.4.2, A.4.3). */
static inline void writeTile(Buffer* to, int tile, const Buffer* packets)
{
    put(to, 2, 0xFF90), put(to, 2, 10), put(to, 2, (uint32_t)tile), put(to, 4, (uint32_t)(14 + packets->length));
    put(to, 2, 0x0001), put(to, 2, 0xFF93);
    for (int i = 0; i < packets->length; ++i) put(to, 1, packets->bytes[i]);
}

static inline void writeCodestream(const char* name, Buffer* codestream)
{
    FILE* file = openFile(name, "wb");
    put(codestream, 2, 0xFFD9);
    writeBytes(file, codestream->bytes, (size_t)codestream->length);
    closeWritten(file);
    free(codestream->bytes);
}

#endif
