// SPDX-License-Identifier: Apache-2.0
// The machine's own limit for a stage that moves bytes: read as many, write as many, compute nothing.
#pragma once

#include "contest.h"

namespace qel::bench {

// Adds "traffic" and "traffic streaming" for `units` units of `in` bytes read and `out` bytes written.
void addTraffic(Contest& contest, double units, int in, int out);

// Adds "traffic" for bytes that are read and written back to where they were.
void addTrafficInPlace(Contest& contest, double units, int bytes);

}
