// SPDX-License-Identifier: Apache-2.0
// What --json prints.
#pragma once

#include <nlohmann/json.hpp>

namespace qel::qelpic {

// Keys stay in the order in which they are given.
using Json = nlohmann::ordered_json;

// To standard output. Bytes that are no UTF-8 are replaced, numbers that are not finite become null.
void print(const Json& json);

}
