// SPDX-License-Identifier: Apache-2.0
// How many processors this process may use.
#pragma once

#include <filesystem>

namespace qel::codec {

// Those that it is bound to, but no more than its control groups give it time of.
int usableProcessors();

// The processor time that control groups of either version give this process, in processors; infinite where nothing
// limits it. `root` is the folder that has `proc` and `sys`.
double processorQuota(const std::filesystem::path& root);

// Those of the machine that no other program is using at this moment, with that of the calling thread; all where the
// system does not tell. `root` is the folder that has `proc`.
int idleProcessors(const std::filesystem::path& root);

}
