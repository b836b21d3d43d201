// Version record, aligned memory, and threads.
#include "qeljx.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <cstring>
#include <string>

#include "core/rows.h"

namespace {

TEST(Version, Record)
{
    const QelLibraryVersion* version = qeljGetLibVersion();
    ASSERT_NE(version, nullptr);
    EXPECT_EQ(version, qeljGetLibVersion());
    EXPECT_STREQ(version->name, "libqeljx.so");
    EXPECT_EQ(std::string(version->version).find(std::to_string(version->major) + "." + std::to_string(version->minor)),
              0u);
    EXPECT_TRUE(version->cpuCode[0] != 0 && version->cpuCode[1] != 0);
    EXPECT_TRUE(version->cpuCode[2] == 0 && version->cpuCode[3] == 0);
    EXPECT_EQ(std::strlen(version->buildDate), 10u);
}

TEST(Memory, IsAlignedWithinItsBlock)
{
    for (int len = 1; len < 5000; len += 7) {
        uint8_t* p = qelsMalloc_8u(len);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ((uintptr_t)p % 32, 0u);
        // The block's address stands before the result; the block holds the whole length.
        uint8_t* block;
        memcpy(&block, p - sizeof block, sizeof block);
        EXPECT_GE(p - block, 4);
        EXPECT_LE(p - block, 35);
        EXPECT_LE(p + len, block + malloc_usable_size(block));
        memset(p, 0xFF, len);
        qelsFree(p);
    }
}

TEST(Memory, RefusesLengthsBelowOne)
{
    EXPECT_EQ(qelsMalloc_8u(0), nullptr);
    EXPECT_EQ(qelsMalloc_8u(-1), nullptr);
    qelsFree(nullptr);
}

#ifdef _OPENMP
// A call from inside a parallel region splits its rows where the caller lets regions lie in each other.
TEST(Threads, StartInsideOthersIfAllowed)
{
    const int threads = omp_get_max_threads(), levels = omp_get_max_active_levels();
    omp_set_num_threads(2);
    for (int allowed : {1, 2}) {
        omp_set_max_active_levels(allowed);
        std::atomic<int> blocks = 0;
#pragma omp parallel num_threads(2)
        qel::forBlocksInParallel({1 << 24, 64}, [&](int, int) { ++blocks; });
        EXPECT_EQ(blocks, 2 * allowed);
    }
    omp_set_num_threads(threads);
    omp_set_max_active_levels(levels);
}
#endif

}
