// SPDX-License-Identifier: Apache-2.0
// The command line of qelpic: the table of its options, from which help texts and pages are made, and what is given.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "codec/base/parallel.h"
#include "qelpic/choices.h"
#include "qelpic/commands.h"

namespace qel::qelpic {

class CommandLine {
public:
    CommandLine();

    // Throws CLI::ParseError; CLI::Success where help or the version is asked for.
    void parse(int argc, char** argv);
    // What has been parsed.
    const CLI::App& command() const { return *app_.get_subcommands().at(0); }
    const Options& options() const { return options_; }

    CLI::App& app() { return app_; }
    const CLI::App& app() const { return app_; }
    const Choices& choices() const { return choices_; }

private:
    CLI::App& addCommand(const char* name, const char* about, std::vector<std::string> usages);
    void addCommon(CLI::App& command);
    void addReporting(CLI::App& command);
    void addFiles(CLI::App& command, const char* about, std::vector<std::string> formats);
    void addCoding(CLI::App& command);
    void addEncode();
    void addJpegOptions(CLI::App& command);
    void addLosslessJpegOptions(CLI::App& command);
    void addDecode();
    void addJ2kDecoding(CLI::App& command);
    void addInfo();
    void addCompare();
    void setFormat(const std::string& name);
    void checkKind() const;
    void settle();

    CLI::App app_;
    Choices choices_;
    Options options_;
    int threads_ = 0;
    std::optional<codec::ThreadLimit> limit_;
    std::string sampling_, predictor_ = "1";
    bool isRgb_ = false, isCmyk_ = false, isSeparate_ = false, keepsTransform_ = false;
};

}
