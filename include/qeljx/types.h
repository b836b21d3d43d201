/* SPDX-License-Identifier: Apache-2.0 */
/* Types that every area shares: status codes, region sizes, the version record. */
#ifndef QELJX_TYPES_H
#define QELJX_TYPES_H

#include <stdint.h>

#if defined(__GNUC__) && !defined(_WIN32)
#define QEL_API __attribute__((visibility("default")))
#else
#define QEL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* What a function returns: zero for success, negative for a failure, positive for a warning (the work was done, but
 * something in the data deserves attention). Unless a function says otherwise, a failure leaves its outputs untouched,
 * and the first of several faults is reported in this order: null pointers, row steps below 1, sizes below 1, values
 * outside their set. */
typedef enum {
    qelStsNoErr = 0,              /* success */
    qelStsDivByZero = 6,          /* warning: a divisor was zero; its quotient is 65535, or 0 for a dividend of 0 */
    qelStsJPEGMarkerWarn = 10,    /* warning: a marker was met while bits were read; treat as success */
    qelStsJPEGCoeffPosErr = -2,   /* a run of zeros leads past the last coefficient of a block */
    qelStsBadArgErr = -5,         /* a value lies outside its allowed set */
    qelStsSizeErr = -6,           /* a width, height or length is less than 1 */
    qelStsOutOfRangeErr = -7,     /* a value needs more than 16 magnitude bits */
    qelStsNullPtrErr = -8,        /* a required pointer, or one pointer of a plane array, is null */
    qelStsMemAllocErr = -9,       /* memory could not be obtained */
    qelStsStepErr = -14,          /* a row step is less than 1 */
    qelStsContextMatchErr = -17,  /* a state object does not carry its identity tag */
    qelStsJPEGOutOfBufErr = -62,  /* the stream ended while bits were needed, or the output buffer is full */
    qelStsJPEGHuffTableErr = -63, /* a Huffman code or magnitude category outside the table */
    qelStsJPEGHuffSpecErr = -64,  /* lists or statistics that give no valid Huffman table, or a symbol without a code */
    qelStsJPEG2KCodeBlockIsFinished = -112, /* an error check of the code-block failed in this or an earlier step */
    qelStsJPEG2KBadPassNumber = -113,       /* a coding pass outside those that were coded */
    qelStsJPEG2KCodeBlockIsNotAttached = -5357978 /* a decoding step before a code-block was attached */
} QelStatus;

/* Size of a region: elements (pixels) per row, and rows. */
typedef struct {
    int width;  /* elements in a row */
    int height; /* rows */
} QelSize;

/* A rectangle of the reference grid, in samples: a tile's place and size. */
typedef struct {
    int x;      /* column of the first sample */
    int y;      /* row of the first sample */
    int width;  /* samples in a row */
    int height; /* rows */
} QelRect;

/* What this build of the library is; see qeljGetLibVersion. */
typedef struct {
    int major;             /* of the version: 0 in 0.1.2 */
    int minor;             /* 1 in 0.1.2 */
    int buildMajor;        /* 2 in 0.1.2 */
    int buildNumber;       /* of builds of the same version */
    char cpuCode[4];       /* best instruction set in this build: two letters and two zero bytes */
    const char* name;      /* "libqeljx.so" */
    const char* version;   /* for example "0.1.0" */
    const char* buildDate; /* ISO 8601 */
} QelLibraryVersion;

#ifdef __cplusplus
}
#endif

#endif
