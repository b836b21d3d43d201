// SPDX-License-Identifier: Apache-2.0
// qelmemory: the most memory that coding a picture takes beyond what is there before: the sample codec, on one thread
// and on two, beside libjpeg-turbo. Each runs in a process of its own. Linux only: peaks are read from /proc.
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include <turbojpeg.h>

#include "codec/base/parallel.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/encode/writer.h"
#include "contest.h"
#include "samples.h"

namespace qel::bench {
namespace {

double statusInMb(const char* field)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(field)) return atof(line.c_str() + line.find(':') + 1) / 1024;
    return 0;
}

// In a child process, whose peak begins anew.
void measure(const char* what, int threads, const std::function<void()>& work)
{
    fflush(stdout);
    if (fork() == 0) {
        codec::ThreadLimit limit(threads);
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << 5;
        double before = statusInMb("VmRSS");
        work();
        printf("%-44s %7.1f MB\n", what, statusInMb("VmHWM") - before);
        fflush(stdout);
        _exit(0);
    }
    int status;
    require(wait(&status) > 0 && status == 0, "a measured process failed");
}

// A photograph beside and below itself: larger than all caches.
codec::Picture largePicture()
{
    const codec::Picture& tile = pictures()[0].picture;
    codec::Picture large(6000, 4000, codec::ColourSpace::rgb, 8);
    for (int y = 0; y < large.height(); ++y)
        for (int x = 0; x < 3 * large.width(); ++x)
            large.row(y)[x] = tile.row(y % tile.height())[x % (3 * tile.width())];
    return large;
}

void run()
{
    // A process that has started threads cannot fork those that would.
    codec::ThreadLimit alone(1);
    codec::Picture picture = largePicture();
    printf("%d x %d pixels, %.1f MB\n", picture.width(), picture.height(), double(picture.sizeInBytes()) / (1 << 20));
    codec::jpeg::EncodeOptions options;
    std::vector<uint8_t> file = codec::jpeg::encode(picture, options);
    options.progressive = true;
    std::vector<uint8_t> progressive = codec::jpeg::encode(picture, options);
    printf("files of %.1f and %.1f MB\n", double(file.size()) / (1 << 20), double(progressive.size()) / (1 << 20));
    for (int threads : {1, 2}) {
        std::string name = threads == 1 ? "qeljx, one thread: " : "qeljx, two threads: ";
        measure((name + "encode 4:2:0").c_str(), threads, [&] { codec::jpeg::encode(picture, {}); });
        measure((name + "decode 4:2:0").c_str(), threads, [&] { codec::jpeg::decode(file); });
        measure((name + "encode progressive").c_str(), threads, [&] { codec::jpeg::encode(picture, options); });
        measure((name + "decode progressive").c_str(), threads, [&] { codec::jpeg::decode(progressive); });
    }
    auto theirEncode = [&](int flags) {
        auto handle = tjInitCompress();
        unsigned char* data = nullptr;
        unsigned long size = 0;
        require(!tjCompress2(handle, picture.row(0), picture.width(), 0, picture.height(), TJPF_RGB, &data, &size,
                             TJSAMP_420, 90, flags),
                "tjCompress2 failed");
    };
    auto theirDecode = [&](const std::vector<uint8_t>& from) {
        codec::Picture decoded(picture.width(), picture.height(), codec::ColourSpace::rgb, 8);
        require(!tjDecompress2(tjInitDecompress(), from.data(), from.size(), decoded.row(0), picture.width(), 0,
                               picture.height(), TJPF_RGB, 0),
                "tjDecompress2 failed");
    };
    measure("libjpeg-turbo: encode 4:2:0", 1, [&] { theirEncode(0); });
    measure("libjpeg-turbo: decode 4:2:0", 1, [&] { theirDecode(file); });
    measure("libjpeg-turbo: encode progressive", 1, [&] { theirEncode(TJFLAG_PROGRESSIVE); });
    measure("libjpeg-turbo: decode progressive", 1, [&] { theirDecode(progressive); });
}

}
}

int main()
{
    try {
        qel::bench::run();
    } catch (const std::exception& error) {
        fprintf(stderr, "qelmemory: %s\n", error.what());
        return 1;
    }
    return 0;
}
