// SPDX-License-Identifier: Apache-2.0
// Messages and the progress bar.
#include "qelpic/console.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace qel::qelpic {

void say(const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); }

void finishOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        throw FileError("standard output", std::string("cannot be written: ") + std::strerror(errno));
}

void sayTime(const char* what, double megapixels, double seconds)
{
    std::fprintf(stderr, "%s %.3f megapixels in %.2f ms: %.1f megapixels/s\n", what, megapixels, 1e3 * seconds,
                 megapixels / seconds);
}

void warn(const std::string& path, const std::vector<std::string>& warnings, bool isQuiet)
{
    if (isQuiet) return;
    for (auto& warning : warnings) say("qelpic: " + path + ": warning: " + warning);
}

ProgressBar::ProgressBar(std::string what, bool isQuiet)
    : what_(std::move(what)), isWanted_(!isQuiet && isatty(STDERR_FILENO)),
      next_(Clock::now() + std::chrono::milliseconds(500))
{}

ProgressBar::~ProgressBar() { clear(); }

void ProgressBar::clear()
{
    if (std::exchange(isShown_, false)) std::fputs("\r\033[K", stderr);
}

std::function<void(double)> ProgressBar::callback()
{
    if (!isWanted_) return {};
    return [this](double part) { show(part); };
}

void ProgressBar::show(double part)
{
    constexpr int kCells = 40;
    auto now = Clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(100);
    isShown_ = true;
    int full = int(part * kCells);
    std::fprintf(stderr, "\r%s [%s%s] %3d %%", what_.c_str(), std::string(full, '#').c_str(),
                 std::string(kCells - full, ' ').c_str(), int(100 * part));
}

}
