// SPDX-License-Identifier: Apache-2.0
// What qelpic says on standard error: one line for each error and warning, a progress bar, times.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "codec/base/error.h"

namespace qel::qelpic {

// An error with the name of the file that it is about.
struct FileError : std::runtime_error {
    FileError(const std::string& path, const std::string& what) : std::runtime_error(path + ": " + what) {}
};

// Runs `step`, whose errors are about the file at `path`.
template <class Step> auto about(const std::string& path, Step step)
{
    try {
        return step();
    } catch (const codec::CodecError& error) {
        throw FileError(path, error.what());
    }
}

void say(const std::string& line);
// What was printed on standard output has to get there. Throws FileError.
void finishOutput();
void sayTime(const char* what, double megapixels, double seconds);
void warn(const std::string& path, const std::vector<std::string>& warnings, bool isQuiet);

// A bar that appears when the work has lasted half a second and standard error is a terminal; it goes when the work is
// done.
class ProgressBar {
public:
    ProgressBar(std::string what, bool isQuiet);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar();

    void clear();
    // For the codec; empty where no bar can appear.
    std::function<void(double)> callback();

private:
    using Clock = std::chrono::steady_clock;

    void show(double part);

    std::string what_;
    bool isWanted_, isShown_ = false;
    Clock::time_point next_;
};

// The result of `code`, which is called `runs` times; then says how long the fastest took. For 0 it is called once and
// nothing is said. `code` gives the result, and `pixels(result)` how many there were.
template <class Code, class Pixels> auto timed(int runs, const char* what, Code code, Pixels pixels)
{
    using Clock = std::chrono::steady_clock;
    auto best = Clock::duration::max();
    for (int run = 1;; ++run) {
        auto start = Clock::now();
        auto result = code();
        best = std::min(best, Clock::now() - start);
        if (run < runs) continue;
        double seconds = std::chrono::duration<double>(best).count(), megapixels = pixels(result) / 1e6;
        if (runs > 0) sayTime(what, megapixels, seconds);
        return result;
    }
}

}
