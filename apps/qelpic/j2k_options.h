// SPDX-License-Identifier: Apache-2.0
// Options of `qelpic encode` for JPEG 2000 files.
#pragma once

#include <CLI/CLI.hpp>

#include "codec/j2k/encode/options.h"
#include "qelpic/choices.h"

namespace qel::qelpic {

// Adds those that only JPEG 2000 files have. The options have to live until the command line is parsed.
void addJ2kOptions(CLI::App& command, codec::j2k::EncodeOptions& options, Choices& choices);

}
