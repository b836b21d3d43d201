// Level shift of planes.
#include "jpeg/level_shift.h"

#include "cases.h"
#include "core/rows.h"
#include "operations.h"
#include "qeljx/jpeg_block.h"

namespace qel::bench {
namespace {

constexpr Layout kSamples = {1, 1, 1}, kCoefficients = {1, 1, 2};

template <class S, class D> Work rows(void (*kernel)(const S*, D*, int))
{
    return [kernel](const Pictures& p) {
        forRows(p.roi, [&](int r) {
            auto src = rowAt((*p.src)[0], p.src->step(), r), dst = rowAt((*p.dst)[0], p.dst->step(), r);
            kernel((const S*)src, (D*)dst, p.roi.width);
        });
    };
}

}

void addLevelShiftCases()
{
    addOperation("level_shift",
                 {"Sub128", kSamples, kCoefficients, call(qeliSub128_JPEG_8u16s_C1R), {}, [](auto& add) {
                      forBuilds<LevelShiftKernels>([&](auto name, auto& build) { add(name, rows(build.sub128)); });
                  }});
    addOperation("level_shift",
                 {"Add128", kCoefficients, kSamples, call(qeliAdd128_JPEG_16s8u_C1R), {}, [](auto& add) {
                      forBuilds<LevelShiftKernels>([&](auto name, auto& build) { add(name, rows(build.add128)); });
                  }});
}

}
