// SPDX-License-Identifier: Apache-2.0
// Help texts.
#include "qelpic/help.h"

#include <sstream>

namespace qel::qelpic {
namespace {

constexpr size_t kColumns = 80, kNameColumns = 30;

}

Help::Help(std::vector<std::string> usages) : usages_(std::move(usages))
{
    column_width(kNameColumns);
    label("Positionals", "Files");
    label("Subcommands", "Commands");
}

std::string Help::make_usage(const CLI::App*, std::string name) const
{
    std::string text;
    for (const std::string& usage : usages_)
        text += (text.empty() ? "\nUsage: " : "       ") + name + " " + usage + "\n";
    return text;
}

// The files have no name of their own, but what they are.
std::string Help::make_option_name(const CLI::Option* option, bool isPositional) const
{
    return isPositional ? option->get_type_name() : Formatter::make_option_name(option, false);
}

std::string Help::make_option_opts(const CLI::Option* option) const
{
    if (option->get_positional() || option->get_type_size() == 0) return "";
    std::string standard = option->get_default_str();
    return " " + option->get_type_name() + (standard.empty() ? "" : "=" + standard);
}

std::string Help::make_option_desc(const CLI::Option* option) const
{
    return wrapped(option->get_description(), kColumns - kNameColumns);
}

std::string wrapped(const std::string& text, size_t columns)
{
    std::istringstream words(text);
    std::string lines, word;
    for (size_t length = 0; words >> word; length += word.size()) {
        bool fits = length + 1 + word.size() <= columns;
        if (length > 0) lines += fits ? " " : "\n";
        length = length > 0 && fits ? length + 1 : 0;
        lines += word;
    }
    return lines;
}

}
