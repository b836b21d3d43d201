// SPDX-License-Identifier: Apache-2.0
// The manual page and the completions of shells, made from the table of options.
#pragma once

#include <string>

#include "qelpic/command_line.h"

namespace qel::pages {

// `page` with the words @VERSION@, @SYNOPSIS@ and @OPTIONS@ replaced.
std::string manualPage(std::string page, const qelpic::CommandLine& line);

std::string bashCompletion(const qelpic::CommandLine& line);
std::string zshCompletion(const qelpic::CommandLine& line);
std::string fishCompletion(const qelpic::CommandLine& line);

// The commands, and of each the options that are no files, in the order of the help text.
std::vector<const CLI::App*> commandsOf(const qelpic::CommandLine& line);
std::vector<const CLI::Option*> optionsOf(const CLI::App& command);
// Its names with their dashes, the short one first.
std::vector<std::string> namesOf(const CLI::Option& option);
bool takesValue(const CLI::Option& option);

void replaceAll(std::string& text, const std::string& from, const std::string& to);

}
