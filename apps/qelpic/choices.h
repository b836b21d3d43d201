// SPDX-License-Identifier: Apache-2.0
// The words that options take, for those who complete what is typed.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <vector>

namespace qel::qelpic {

using Choices = std::map<const CLI::Option*, std::vector<std::string>>;

template <class Value> std::vector<std::string> namesOf(const std::map<std::string, Value>& values)
{
    std::vector<std::string> names;
    for (auto& [name, value] : values) names.push_back(name);
    return names;
}

}
