// SPDX-License-Identifier: Apache-2.0
// The subcommands of qelpic: what the command line says, and what is done with it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "codec/formats/formats.h"
#include "codec/j2k/decode/options.h"
#include "codec/j2k/encode/options.h"
#include "codec/jpeg/decode/options.h"
#include "codec/jpeg/encode/options.h"

namespace qel::qelpic {

enum ExitCode {
    kDone = 0,
    kFailed = 1,  // a file is damaged, unsupported or cannot be written: nothing was written
    kUsage = 2,   // the command line
    kDamaged = 3, // something was written, but an input is damaged or, of many, some failed: the messages say which
};

struct Options {
    std::vector<std::string> files; // inputs, and the output of `encode` and `decode` where there is no folder for it
    std::string outputFolder;
    std::optional<codec::Format> format; // of the output; else its name says it
    bool isRecursive = false, skipsExisting = false;
    bool strips = false; // metadata
    bool turnsUpright = false;
    codec::jpeg::EncodeOptions encoding;
    codec::j2k::EncodeOptions j2k;
    std::string scanScript; // file that `encoding.scans` is read from; empty if there is none
    codec::jpeg::DecodeOptions decoding;
    codec::j2k::DecodeOptions j2kDecoding;
    std::optional<int> component; // to be decoded alone
    bool isQuiet = false;
    int runs = 0;                    // how often to code for the time to be taken; 0 is once, without a report
    std::optional<double> leastPsnr; // that `compare` is content with
    bool isJson = false;             // what `info` and `compare` print
};

// All throw FileError (console.h).
ExitCode encode(const Options& options);
ExitCode decode(const Options& options);
ExitCode info(const Options& options);
ExitCode compare(const Options& options);

}
