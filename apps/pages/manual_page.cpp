// SPDX-License-Identifier: Apache-2.0
// The manual page in the language of troff, man(7).
#include <qeljx.h>

#include <set>
#include <sstream>

#include "pages/pages.h"
#include "qelpic/help.h"

namespace qel::pages {
namespace {

constexpr size_t kColumns = 100;

// Text as it is to be seen.
std::string plain(std::string text)
{
    replaceAll(text, "\\", "\\e");
    replaceAll(text, "-", "\\-");
    return text;
}

std::string bold(const std::string& text) { return "\\fB" + plain(text) + "\\fR"; }
std::string italic(const std::string& text) { return "\\fI" + plain(text) + "\\fR"; }

// Words in capitals stand for what the user gives.
std::string usage(const std::string& command, const std::string& words)
{
    std::string line = bold("qelpic " + command), word;
    std::istringstream in(words);
    while (in >> word) line += " " + (word[0] == '-' ? bold(word) : word[0] == '[' ? plain(word) : italic(word));
    return line + "\n";
}

std::string synopsis(const qelpic::CommandLine& line)
{
    std::string text = ".nf\n";
    for (const CLI::App* command : commandsOf(line)) {
        auto& help = dynamic_cast<const qelpic::Help&>(*command->get_formatter());
        for (const std::string& words : help.usages()) text += usage(command->get_name(), words);
    }
    return text + ".fi";
}

// Sorted, as the set is by addresses.
std::string namesIn(const std::set<CLI::Option*>& options)
{
    std::set<std::string> names;
    for (const CLI::Option* option : options) names.insert(option->get_name());
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

std::string entry(const CLI::Option& option)
{
    std::string text = ".TP\n";
    for (const std::string& name : namesOf(option)) text += (text.size() > 4 ? ", " : "") + bold(name);
    if (takesValue(option)) text += " " + italic(option.get_type_name());
    std::string about = option.get_description();
    if (!option.get_default_str().empty()) about += "; " + option.get_default_str() + " by default";
    if (!option.get_excludes().empty()) about += ". Not with " + namesIn(option.get_excludes());
    return text + "\n\\&" + plain(qelpic::wrapped(about, kColumns)) + "\n";
}

std::string options(const CLI::App& command)
{
    std::string text = ".SH OPTIONS OF " + command.get_name() + "\n";
    std::string group;
    for (const CLI::Option* option : optionsOf(command)) {
        if (option->get_group() != group && option->get_group() != "Options")
            text += ".SS \"For " + plain(option->get_group()) + "\"\n";
        group = option->get_group();
        text += entry(*option);
    }
    return text;
}

}

std::string manualPage(std::string page, const qelpic::CommandLine& line)
{
    std::string all;
    for (const CLI::App* command : commandsOf(line)) all += options(*command);
    replaceAll(page, "@VERSION@", qeljGetLibVersion()->version);
    replaceAll(page, "@SYNOPSIS@", synopsis(line));
    replaceAll(page, "@OPTIONS@\n", all);
    return page;
}

}
