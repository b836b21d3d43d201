// SPDX-License-Identifier: Apache-2.0
// Names of outputs, and the loop over files.
#include "qelpic/batch.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <set>

#include "codec/base/file_io.h"
#include "qelpic/console.h"

namespace qel::qelpic {
namespace {

namespace fs = std::filesystem;

struct Input {
    fs::path path, inFolder; // the second one is how it is named below the output folder
};

bool isPictureName(const fs::path& path) { return codec::formatNamed(codec::extensionOf(path.string())).has_value(); }

template <class Iterator> void addFolder(const fs::path& folder, std::vector<Input>& inputs)
{
    size_t first = inputs.size();
    for (auto& entry : Iterator(folder))
        if (entry.is_regular_file() && isPictureName(entry.path()))
            inputs.push_back({entry.path(), entry.path().lexically_relative(folder)});
    std::ranges::sort(inputs.begin() + ptrdiff_t(first), inputs.end(), {}, &Input::path);
}

std::vector<Input> inputFiles(const std::vector<std::string>& names, bool isRecursive)
{
    std::vector<Input> inputs;
    for (const std::string& name : names) {
        std::error_code failure;
        if (!fs::is_directory(name, failure))
            inputs.push_back({name, fs::path(name).filename()});
        else if (isRecursive)
            addFolder<fs::recursive_directory_iterator>(name, inputs);
        else
            addFolder<fs::directory_iterator>(name, inputs);
    }
    return inputs;
}

void checkFormat(codec::Format format, bool (*isWritten)(codec::Format), const std::string& path, const char* known)
{
    if (!isWritten(format)) throw FileError(path, std::string("the name should end in ") + known);
}

// Of the one output that is named.
codec::Format formatOf(const Options& options, const std::string& path, codec::Format standard, const char* known)
{
    if (options.format) return *options.format;
    if (path == "-") return standard;
    std::string extension = codec::extensionOf(path);
    if (auto format = codec::formatNamed(extension)) return *format;
    throw FileError(path, (extension.empty() ? "a name without an extension" : "unknown extension ." + extension) +
                              ": the name should end in " + known + "; or use --format");
}

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}

std::vector<Job> jobsOf(const Options& options, codec::Format standard, bool (*isWritten)(codec::Format),
                        const char* known)
{
    if (options.format) checkFormat(*options.format, isWritten, "--format", known);
    std::vector<Job> jobs;
    if (options.outputFolder.empty()) {
        if (options.files.size() != 2)
            throw CLI::ValidationError("an input and an output are expected, or many inputs and --outdir");
        const std::string &input = options.files[0], &output = options.files[1];
        jobs.push_back({input, output, formatOf(options, output, standard, known)});
        checkFormat(jobs[0].format, isWritten, output, known);
        return jobs;
    }
    codec::Format format = options.format.value_or(standard);
    std::set<fs::path> outputs;
    for (const Input& input : inputFiles(options.files, options.isRecursive)) {
        fs::path output = fs::path(options.outputFolder) / input.inFolder;
        output.replace_extension(codec::extensionOf(format));
        if (!outputs.insert(output).second)
            throw FileError(output.string(), "several inputs would be written under this name");
        jobs.push_back({input.path.string(), output.string(), format});
    }
    return jobs;
}

std::vector<std::string> inputsOf(const Options& options)
{
    std::vector<std::string> names;
    for (const Input& input : inputFiles(options.files, options.isRecursive)) names.push_back(input.path.string());
    return names;
}

ExitCode runAll(const Options& options, const char* verb, const std::vector<Job>& jobs,
                const std::function<Outcome(const Job&)>& run)
{
    if (options.outputFolder.empty()) return run(jobs[0]).isDamaged ? kDamaged : kDone;
    auto start = std::chrono::steady_clock::now();
    size_t done = 0, failed = 0, damaged = 0, skipped = 0;
    Outcome sum;
    ProgressBar bar(verb, options.isQuiet);
    auto progress = bar.callback();
    for (const Job& job : jobs) {
        if (progress) progress(double(done + failed + skipped) / double(jobs.size()));
        std::error_code ignored;
        if (options.skipsExisting && fs::exists(job.output, ignored)) {
            ++skipped;
            continue;
        }
        fs::create_directories(fs::path(job.output).parent_path(), ignored);
        try {
            Outcome outcome = run(job);
            sum = {sum.pixels + outcome.pixels, sum.bytesIn + outcome.bytesIn, sum.bytesOut + outcome.bytesOut};
            damaged += outcome.isDamaged;
            ++done;
        } catch (const FileError& error) {
            bar.clear();
            say(std::string("qelpic: ") + error.what());
            ++failed;
        }
    }
    bar.clear();
    if (!options.isQuiet) {
        double seconds = secondsSince(start);
        std::fprintf(stderr, "%zu files, %zu bytes to %zu, %.1f megapixels/s", done, sum.bytesIn, sum.bytesOut,
                     sum.pixels / 1e6 / std::max(seconds, 1e-9));
        if (skipped) std::fprintf(stderr, "; %zu skipped", skipped);
        if (damaged) std::fprintf(stderr, "; %zu damaged", damaged);
        std::fprintf(stderr, failed ? "; %zu failed\n" : "\n", failed);
    }
    if (failed && !done) return kFailed;
    return failed || damaged ? kDamaged : kDone;
}

}
