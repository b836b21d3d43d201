// SPDX-License-Identifier: Apache-2.0
// Many files by one command: which become which, progress, what went wrong, and a summary.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "qelpic/commands.h"

namespace qel::qelpic {

struct Job {
    std::string input, output;
    codec::Format format; // of the output
};

struct Outcome {
    double pixels = 0;
    size_t bytesIn = 0, bytesOut = 0;
    bool isDamaged = false;
};

// The job that the command line describes, or with an output folder one for each input, and for each picture in inputs
// that are folders. `standard` is the format where neither a name nor an option says one; `isWritten` which there are,
// and `known` names them in errors. Throws CLI::ValidationError and FileError.
std::vector<Job> jobsOf(const Options& options, codec::Format standard, bool (*isWritten)(codec::Format),
                        const char* known);

// Runs one job, whose errors are the command's, or many: a failure does not stop these, and a summary follows.
ExitCode runAll(const Options& options, const char* verb, const std::vector<Job>& jobs,
                const std::function<Outcome(const Job&)>& run);

// The inputs of a command that writes no files: folders are replaced by the pictures in them.
std::vector<std::string> inputsOf(const Options& options);

}
