// SPDX-License-Identifier: Apache-2.0
// Level shift of planes.
#include "jpeg/block/level_shift.h"

#include "cases.h"
#include "operations.h"
#include "qeljx/jpeg_block.h"

namespace qel::bench {
namespace {

constexpr Layout kSamples = {1, 1, 1}, kCoefficients = {1, 1, 2};

}

void addLevelShiftCases()
{
    addOperation("level_shift", {"Sub128", kSamples, kCoefficients, call(qeliSub128_JPEG_8u16s_C1R),
                                 buildsOf(&LevelShiftKernels::sub128)});
    addOperation("level_shift", {"Add128", kCoefficients, kSamples, call(qeliAdd128_JPEG_16s8u_C1R),
                                 buildsOf(&LevelShiftKernels::add128)});
}

}
