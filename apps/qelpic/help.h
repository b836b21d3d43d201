// SPDX-License-Identifier: Apache-2.0
// Help texts, made from the table of options.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace qel::qelpic {

// Lines of at most 80 columns. What excludes what is left to errors.
class Help : public CLI::Formatter {
public:
    // How the command is called: what stands behind its name, one line for each way.
    explicit Help(std::vector<std::string> usages);

    const std::vector<std::string>& usages() const { return usages_; }

    std::string make_usage(const CLI::App* app, std::string name) const override;
    std::string make_option_name(const CLI::Option* option, bool isPositional) const override;
    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;

private:
    std::vector<std::string> usages_;
};

// Lines of at most so many columns, broken at spaces.
std::string wrapped(const std::string& text, size_t columns);

}
