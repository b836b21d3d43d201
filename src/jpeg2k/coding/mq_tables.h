// SPDX-License-Identifier: Apache-2.0
// Probability estimation of the MQ coder (T.800 Table C.2) and the contexts of code-blocks.
#pragma once

#include <stdint.h>

#include "core/exports.h"

namespace qel {

// Contexts of code-blocks (T.800 Table D.7). Those of a sample count from these on.
enum Context {
    kContextUniform = 0,
    kContextRunLength = 1,
    kContextZeroCoding = 2,  // 9, T.800 Table D.1
    kContextSign = 11,       // 5, T.800 Table D.3
    kContextRefinement = 16, // 3, T.800 Table D.4
    kContexts = 19
};

}

// By state: Qe, the next state after an MPS, the next state after an LPS, 1 where an LPS inverts the sense of the MPS.
QEL_TABLE const uint32_t owniEstimator_JPEG2K[47][4];
// By context.
QEL_TABLE const int32_t owniInitialCtxIndexes_JPEG2K[qel::kContexts];
QEL_TABLE const int32_t owniInitialMPS_JPEG2K[qel::kContexts];
