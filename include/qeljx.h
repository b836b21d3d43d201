/* SPDX-License-Identifier: Apache-2.0 */
/* qeljx: compute primitives for still-image codecs (JPEG, ITU-T T.81, and JPEG 2000,
 * ITU-T T.800).
 * This is the one header a caller includes; it is plain C99 and declares everything that the library exports for use.
 *
 * Names. qeli (images), qels (arrays, memory) or qelj (the library), the operation, then what it works on, source
 * first:
 * - 8u 16u 16s 32s 32f: unsigned and signed integers of so many bits, single floats; 1u: a stream of bits
 * - C1 C3 C4, P3 P4: channels interleaved in one plane, or planes; C3P3: from interleaved pixels to planes
 * - R: takes a region, that is a pointer, a step and a size; I: works in place
 * - LS: with the level shift by 128; MCU: on one minimum coded unit of 8x8 blocks
 * - 444, 422, 411: chroma in every pixel, halved across (2x1), halved both ways (2x2; others call it 4:2:0)
 *
 * So qeliYCbCrToRGB_JPEG_8u_P3C3R takes three planes of bytes to interleaved pixels, for a region.
 *
 * Steps are distances in bytes from row to row, 1 or more, the same for all planes of an array. Pointers may lie at any
 * address, also for elements of 16 and 32 bits. Source and destination do not overlap unless a function says how they
 * may. Rows of a destination that overlap each other (a step below the bytes of a row) come out as if they were written
 * from the first to the last, as long as one thread writes them.
 *
 * Threads. Any function may be called by any number of threads at once; an object is used by one at a time. By itself
 * only these start threads, by OpenMP and for regions of four million pixels and more: qeliYCbCrToRGB, qeliYCbCrToBGR
 * (8u_P3C3R, 8u_P3R), qeliRGBToYCbCr, qeliBGRToYCbCr (8u), qeliRGBToY, qeliBGRToY, qeliCMYKToYCCK, qeliYCCKToCMYK,
 * qeliSampleDownH2V2_JPEG_8u_C1R and qeliSampleUpH2V2_JPEG_8u_C1R. A team has one thread for each two million pixels,
 * omp_get_max_threads() at most, and is one thread inside a caller's own parallel region. OMP_NUM_THREADS or
 * omp_set_num_threads(1) keep it from growing; in a container with a quota of processors set the former, for OpenMP
 * counts processors only. Waiting workers spin for a while: where other programs want the processors, set
 * OMP_WAIT_POLICY=passive. Workers do not survive fork(): with GCC's runtime, a process that has
 * used them calls omp_pause_resource_all(omp_pause_hard) before it forks, if the child is to go on calling; LLVM's
 * starts anew in the child by itself.
 */
#ifndef QELJX_H
#define QELJX_H

#include "qeljx/types.h"

#include "qeljx/jpeg2k_coding.h"
#include "qeljx/jpeg2k_transform.h"
#include "qeljx/jpeg_block.h"
#include "qeljx/jpeg_colour.h"
#include "qeljx/jpeg_entropy.h"
#include "qeljx/jpeg_lossless.h"
#include "qeljx/jpeg_mcu.h"
#include "qeljx/jpeg_progressive.h"
#include "qeljx/jpeg_sampling.h"
#include "qeljx/support.h"

#endif
