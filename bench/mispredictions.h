// SPDX-License-Identifier: Apache-2.0
// Branches that the processor predicted wrongly, where it lets programs count them (Linux perf events).
#pragma once

#include <functional>
#include <optional>

namespace qel::bench {

// Of one run on this thread, in user mode. Nothing where the machine has no such counter, or does not share it.
std::optional<double> mispredictionsOf(const std::function<void()>& run);

}
