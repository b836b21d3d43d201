// SPDX-License-Identifier: Apache-2.0
// Functions that become part of their callers in every build: no copy of them is left for the linker to choose from.
// Builds that use no instruction set of their own may define these away.
#pragma once

#ifndef QEL_INLINE
#define QEL_INLINE inline __attribute__((always_inline))
// For the body of a loop: `[=](auto samples, int i) QEL_INLINE_BODY { ... }`. Called, it would make its constants anew.
#define QEL_INLINE_BODY __attribute__((always_inline))
#endif
