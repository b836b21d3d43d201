// SPDX-License-Identifier: Apache-2.0
// More threads change nothing but the time; and how many there are by default.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "codec/base/parallel.h"
#include "codec/base/processors.h"
#include "codec/j2k/decode/reader.h"
#include "codec/j2k/encode/writer.h"
#include "codec/jpeg/decode/reader.h"
#include "jpeg_cases.h"
#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;
using File = std::vector<uint8_t>;

constexpr int kThreads = 4; // also where there are fewer processors

template <class Work> auto alone(Work work)
{
    ThreadLimit limit(1);
    return work();
}
template <class Work> auto together(Work work)
{
    ThreadLimit limit(kThreads);
    return work();
}

// Decoded on one thread and on several: the same picture, and the same said of it.
template <class Decode> void expectSameDecoded(const File& file, Decode decode)
{
    auto one = alone([&] { return decode(file); }), several = together([&] { return decode(file); });
    expectSame(several.picture, one.picture);
    EXPECT_EQ(several.warnings, one.warnings);
}

// The file whole, with its end missing, and with some bytes changed.
template <class Decode> void expectSameDecodedOfAll(File file, Decode decode)
{
    expectSameDecoded(file, decode);
    expectSameDecoded({file.begin(), file.begin() + ptrdiff_t(file.size()) * 2 / 3}, decode);
    Random random(unsigned(file.size()));
    for (int i = 0; i < 8; ++i) file[size_t(random.between(1000, int(file.size()) - 1))] ^= 1 << random.between(0, 7);
    expectSameDecoded(file, decode);
}

// Large enough for several threads.
TEST(Threads, ChangeNoJpegFiles)
{
    const std::pair<ColourSpace, jpeg::EncodeOptions> cases[] = {
        {ColourSpace::rgb, {}},
        {ColourSpace::rgb, {.sampling = jpeg::kSampling444}},
        {ColourSpace::rgb, {.sampling = jpeg::kSampling440, .optimiseTables = true}},
        {ColourSpace::cmyk, {.quality = 98, .fast = true}},
        {ColourSpace::grey, {.optimiseTables = true, .restartInterval = 1}},
        {ColourSpace::rgb, {.restartInterval = 700}},
        {ColourSpace::rgb, {.sampling = jpeg::kSampling422, .optimiseTables = true, .restartRows = 3}},
        {ColourSpace::rgb, {.interleaved = false, .restartInterval = 77}},
        {ColourSpace::rgb, {.sampling = jpeg::kSampling444, .progressive = true}},
        {ColourSpace::rgb, {.progressive = true, .restartInterval = 700}},
    };
    for (auto& tested : cases) {
        SCOPED_TRACE(&tested - cases);
        const jpeg::EncodeOptions& options = tested.second;
        Picture picture = drawnPicture(1201, 900, tested.first);
        File file = alone([&] { return jpeg::encode(picture, options); });
        EXPECT_TRUE(together([&] { return jpeg::encode(picture, options); }) == file);
        for (jpeg::Upsampling upsampling : {jpeg::Upsampling::triangle, jpeg::Upsampling::replicate})
            expectSameDecodedOfAll(file, [&](Bytes bytes) { return jpeg::decode(bytes, {.upsampling = upsampling}); });
    }
}

TEST(Threads, ChangeNoJpeg2000Files)
{
    Picture picture = drawnPicture(500, 300, ColourSpace::rgb, 8);
    const j2k::EncodeOptions cases[] = {
        {.isLossless = true},
        {.bitsPerPixel = 1, .layers = 3},
        {.isLossless = true, .tile = {{70, 90}}},
        {.psnr = 40, .tile = {{300, 300}}, .order = j2k::Order::rpcl, .precincts = {{128, 128}}},
    };
    for (const j2k::EncodeOptions& options : cases) {
        SCOPED_TRACE(&options - cases);
        File file = alone([&] { return j2k::encode(picture, options); });
        EXPECT_TRUE(together([&] { return j2k::encode(picture, options); }) == file);
        expectSameDecodedOfAll(file, [](Bytes bytes) { return j2k::decode(bytes); });
    }
}

// Neither the codec nor the library under it starts any where one is asked for.
TEST(Threads, AreNotStartedForOne)
{
    std::filesystem::path tasks = "/proc/self/task";
    if (!std::filesystem::exists(tasks)) GTEST_SKIP() << "the system has no list of threads";
    auto count = [&] { return std::distance(std::filesystem::directory_iterator(tasks), {}); };
    auto before = count();
    alone([&] {
        Picture picture = drawnPicture(9000, 128, ColourSpace::rgb);
        for (const jpeg::Samplings& sampling : {jpeg::kSampling420, jpeg::kSampling444})
            expectSame(jpeg::decode(jpeg::encode(picture, {.sampling = sampling})).picture,
                       jpeg::decode(jpeg::encode(picture, {.sampling = sampling, .progressive = true})).picture);
        expectSame(j2k::decode(j2k::encode(picture, {.isLossless = true})).picture, picture);
    });
    EXPECT_EQ(count(), before);
}

// A failure on any thread is the caller's, and the next work goes well.
TEST(Threads, HandOnFailures)
{
    for (int failing : {0, 7, 99})
        together([&] {
            auto work = [&](int i) {
                if (i == failing) throw CodecError("no " + std::to_string(i));
            };
            withThreads(kThreads, [&] {
                EXPECT_EQ(errorOf([&] { forEachInParallel(100, kThreads, work); }), "no " + std::to_string(failing));
            });
            std::atomic<int> sum = 0;
            withThreads(kThreads, [&] { forEachInParallel(100, kThreads, [&](int i) { sum += i; }); });
            EXPECT_EQ(sum, 4950);
        });
}

TEST(Threads, FollowTheInnermostLimit)
{
    ThreadLimit outer(3);
    EXPECT_EQ(threadsFor(1 << 20), 3);
    {
        ThreadLimit inner(5);
        EXPECT_EQ(threadsFor(1 << 20), 5);
        EXPECT_EQ(threadsFor(1 << 10), 1);
    }
    EXPECT_EQ(threadsFor(1 << 20), 3);
}

TEST(IdleProcessors, AreThoseThatNobodyUses)
{
    std::filesystem::path root = std::filesystem::path(testing::TempDir()) / ("idle" + std::to_string(getpid()));
    int all = idleProcessors(root); // nothing is known
    EXPECT_GE(all, 1);
    std::filesystem::create_directories(root / "proc");
    for (int others : {0, 1, 100 + all}) {
        std::ofstream(root / "proc/loadavg") << "9.5 7.25 3 " << 1 + others << "/321 4567\n";
        EXPECT_EQ(idleProcessors(root), std::max(all - others, 0));
    }
    std::filesystem::remove_all(root);
}

// A file of a control group, and the quota once it and those before it are there.
struct QuotaFile {
    const char *name, *text;
    double quota;
};
void expectQuotas(const std::vector<QuotaFile>& files)
{
    std::filesystem::path root = std::filesystem::path(testing::TempDir()) / ("quota" + std::to_string(getpid()));
    EXPECT_EQ(processorQuota(root), INFINITY);
    for (auto& [name, text, quota] : files) {
        std::filesystem::create_directories((root / name).parent_path());
        std::ofstream(root / name) << text;
        EXPECT_EQ(processorQuota(root), quota) << name << ": " << text;
    }
    std::filesystem::remove_all(root);
}

TEST(ProcessorQuota, IsTheLeastOnTheWayUp)
{
    std::vector<QuotaFile> files = {{"proc/self/cgroup", "0::/a/b c/d\n", INFINITY}};
    for (const char* text : {"max 100000\n", "", "100000", "nonsense at all", "0 100000", "100000 0"})
        files.push_back({"sys/fs/cgroup/a/b c/d/cpu.max", text, INFINITY});
    files.push_back({"sys/fs/cgroup/a/b c/cpu.max", "150000 100000\n", 1.5});
    files.push_back({"sys/fs/cgroup/a/cpu.max", "25000 50000\n", 0.5});
    // A container's own group, seen as the topmost.
    files.push_back({"sys/fs/cgroup/cpu.max", "10000 100000\n", 0.1});
    expectQuotas(files);
}

TEST(ProcessorQuota, OfVersion1StandsWithItsController)
{
    expectQuotas({
        {"proc/self/cgroup", "12:cpuset:/x\n4:cpu,cpuacct:/host/name\n1:name=systemd:/y:z\n0::/\n", INFINITY},
        {"sys/fs/cgroup/cpuset/x/cpu.cfs_quota_us", "1\n", INFINITY},
        {"sys/fs/cgroup/cpuset/x/cpu.cfs_period_us", "1000\n", INFINITY},
        {"sys/fs/cgroup/cpu,cpuacct/cpu.cfs_quota_us", "-1\n", INFINITY},
        {"sys/fs/cgroup/cpu,cpuacct/cpu.cfs_period_us", "100000\n", INFINITY},
        {"sys/fs/cgroup/cpu/cpu.cfs_quota_us", "300000\n", INFINITY},
        {"sys/fs/cgroup/cpu/cpu.cfs_period_us", "100000\n", 3},
    });
    EXPECT_GE(usableProcessors(), 1);
}

}
