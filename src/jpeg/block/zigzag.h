// SPDX-License-Identifier: Apache-2.0
// The zig-zag order of a block of coefficients (T.81 Figure A.6).
#pragma once

#include <stdint.h>

#include "core/exports.h"

// Natural index (8 * row + column) to position in the scan, and back.
QEL_TABLE const int32_t zigzag_index_Fwd[64];
QEL_TABLE const int32_t zigzag_index_Inv[64];
// zigzag_index_Inv with guard entries: a decoder that runs up to eight positions past the last one reads 63.
QEL_TABLE const int32_t own_qj_izigzag_index[72];
