/* Progressive Huffman coding: the scans of T.81 Annex G, an 8x8 block a call. */
#ifndef QELJX_JPEG_PROGRESSIVE_H
#define QELJX_JPEG_PROGRESSIVE_H

#include "jpeg_entropy.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Encoding. */

/* Decoding. */

#ifdef __cplusplus
}
#endif

#endif
