// Runs a check against every build of a kernel table that this processor can run.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string_view>

#include "guarded.h"
#include "random.h"

namespace qel::test {

// The environment variable QELJX_TEST_BUILD names the one build to test, as emulation is slow.
inline bool isWanted(const char* build)
{
    const char* only = getenv("QELJX_TEST_BUILD");
    return only == nullptr || std::string_view(only) == build;
}

inline bool canRun(const char* build)
{
    if (!isWanted(build)) return false;
#if QEL_X86
    std::string_view name = build;
    if (name == "avx2") return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
    // Where AVX-512 is emulated, its tests run or crash: skipping them would pass for success.
    if (name == "avx512" && QEL_EMULATE_AVX512) return true;
    if (name == "avx512") return __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vl");
#endif
    return true;
}

// check(table) for each build but Table::scalar, which the check compares with.
template <class Table, class Check> void everyBuild(Check check)
{
    const struct {
        const char* name;
        const Table* table;
    } builds[] = {
        {"baseline", &Table::baseline},
        {"wide16", &Table::wide16},
        {"wide32", &Table::wide32},
        {"wide64", &Table::wide64},
#if QEL_X86
        {"avx2", &Table::avx2},
        {"avx512", &Table::avx512},
#endif
    };
    for (auto& build : builds) {
        if (!canRun(build.name)) continue;
        SCOPED_TRACE(build.name);
        check(*build.table);
        if (testing::Test::HasFailure()) return;
    }
}

// Lengths around every step of a row: 1 to 200, and some long ones.
template <class Check> void everyLength(Check check)
{
    for (int len = 1; len <= 200; ++len) check(len);
    for (int len : {511, 512, 513, 1000, 4099}) check(len);
}

}
