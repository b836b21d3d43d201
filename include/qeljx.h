/* qeljx: compute primitives for still-image codecs (JPEG, ITU-T T.81, and JPEG 2000,
 * ITU-T T.800).
 * This is the one header a caller includes; it is plain C99 and declares everything that the library exports for use.
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
