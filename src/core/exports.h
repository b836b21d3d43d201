// SPDX-License-Identifier: Apache-2.0
// How internal functions and tables leave the shared library: by their plain C name.
#pragma once

#include "qeljx/types.h"

#define QEL_KERNEL extern "C" QEL_API
#define QEL_TABLE extern "C" QEL_API
