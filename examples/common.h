/* SPDX-License-Identifier: Apache-2.0 */
/* What the examples share: raw PGM and PPM files, memory, and ending with a message. */
#ifndef EXAMPLES_COMMON_H
#define EXAMPLES_COMMON_H

#include <qeljx.h>
#include <qeljx/status.h>

#include <stdio.h>
#include <stdlib.h>

typedef struct {
    int width, height, channels; /* 1: grey, 3: R, G, B */
    int maximum;                 /* up to 255 a sample has one byte, else two, the upper one first */
    uint8_t* samples;            /* row after row, without gaps */
} Pnm;

static inline void fail(const char* what)
{
    fprintf(stderr, "%s\n", what);
    exit(1);
}

/* Ends the program for what cannot happen with good arguments. */
static inline void check(QelStatus status)
{
    if (status >= 0) return;
    fprintf(stderr, "%s: ", qelStatusName(status));
    fail(qelStatusText(status));
}

static inline void* take(size_t size)
{
    void* memory = calloc(size ? size : 1, 1);
    if (!memory) fail("there is not enough memory");
    return memory;
}

static inline FILE* openFile(const char* name, const char* mode)
{
    FILE* file = fopen(name, mode);
    if (!file) perror(name), exit(1);
    return file;
}

static inline void writeBytes(FILE* file, const void* bytes, size_t count)
{
    if (count && fwrite(bytes, 1, count, file) != count) fail("the file cannot be written");
}

static inline void closeWritten(FILE* file)
{
    if (fclose(file) != 0) fail("the file cannot be written");
}

/* A raw PGM or PPM file without comments. */
static inline Pnm readPnm(const char* name)
{
    FILE* file = openFile(name, "rb");
    Pnm picture = {0, 0, 0, 0, NULL};
    char kind;
    if (fscanf(file, "P%c%d%d%d", &kind, &picture.width, &picture.height, &picture.maximum) != 4 || getc(file) == EOF ||
        (kind != '5' && kind != '6') || picture.width < 1 || picture.height < 1 || picture.width > 65535 ||
        picture.height > 65535 || picture.maximum < 1 || picture.maximum > 65535)
        fail("not a raw PGM or PPM file of up to 65535 x 65535 samples");
    picture.channels = kind == '5' ? 1 : 3;
    size_t size = (size_t)picture.width * picture.height * picture.channels * (picture.maximum > 255 ? 2 : 1);
    picture.samples = take(size);
    if (fread(picture.samples, 1, size, file) != size) fail("the picture ends too soon");
    fclose(file);
    return picture;
}

/* Rows of bytes, `step` bytes apart. */
static inline void writePnm(const char* name, const uint8_t* samples, int step, int width, int height, int channels)
{
    FILE* file = openFile(name, "wb");
    fprintf(file, "P%c\n%d %d\n255\n", channels == 1 ? '5' : '6', width, height);
    for (int y = 0; y < height; ++y) writeBytes(file, samples + (size_t)y * step, (size_t)width * channels);
    closeWritten(file);
}

#endif
