// SPDX-License-Identifier: Apache-2.0
// Version record, aligned memory, and threads.
#include "qeljx.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

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
        qel::forBlocks<qel::Threads::all>({1 << 24, 64}, [&](int, int) { ++blocks; });
        EXPECT_EQ(blocks, 2 * allowed);
    }
    omp_set_num_threads(threads);
    omp_set_max_active_levels(levels);
}

// No thread gets less than its work is worth: regions of pictures for a screen stay on the calling thread.
TEST(Threads, TeamsGrowWithTheRegion)
{
    const int threads = omp_get_max_threads();
    omp_set_num_threads(4);
    EXPECT_EQ(qel::threadsFor({1920, 1080}), 1);
    EXPECT_EQ(qel::threadsFor({3840, 2160}), 3);
    EXPECT_EQ(qel::threadsFor({30000, 20000}), 4);
    EXPECT_EQ(qel::threadsFor({INT_MAX, 3}), 3);
    omp_set_num_threads(threads);
}

// The workers of OpenMP do not come along through fork(): without the pause a child of GCC's runtime would wait for
// them for ever.
TEST(Threads, AChildMayCallAfterAPause)
{
    const QelSize roi = {4096, 2048};
    std::vector<uint8_t> rgb(size_t(3) * roi.width * roi.height, 7), grey(rgb.size() / 3);
    auto convert = [&] { return qeliRGBToY_JPEG_8u_C3C1R(rgb.data(), 3 * roi.width, grey.data(), roi.width, roi); };
    const int threads = omp_get_max_threads();
    omp_set_num_threads(2);
    ASSERT_EQ(qel::threadsFor(roi), 2);
    ASSERT_EQ(convert(), qelStsNoErr);
#ifndef __clang__ // whose runtime starts anew in a child by itself, and fails there after a pause
    ASSERT_EQ(omp_pause_resource_all(omp_pause_hard), 0);
#endif
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        alarm(60);
        grey.assign(grey.size(), 0);
        bool isRight = convert() == qelStsNoErr && grey.front() == 7 && grey.back() == 7;
        _exit(isRight ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    omp_set_num_threads(threads);
}
#endif

}
