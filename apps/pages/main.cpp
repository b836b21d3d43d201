// SPDX-License-Identifier: Apache-2.0
// Writes the manual page, of the text around the options, and the completions of shells into a folder.
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "pages/pages.h"

namespace qel::pages {

std::vector<const CLI::App*> commandsOf(const qelpic::CommandLine& line)
{
    return line.app().get_subcommands([](const CLI::App*) { return true; });
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& command)
{
    return command.get_options([](const CLI::Option* option) { return !option->get_positional(); });
}

std::vector<std::string> namesOf(const CLI::Option& option)
{
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

bool takesValue(const CLI::Option& option) { return option.get_type_size() != 0; }

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
}

namespace {

std::string textOf(const std::string& path)
{
    std::ostringstream text;
    if (!(text << std::ifstream(path).rdbuf())) throw std::runtime_error(path + " cannot be read");
    return text.str();
}

void store(const std::string& path, const std::string& text)
{
    if (!(std::ofstream(path) << text << std::flush)) throw std::runtime_error(path + " cannot be written");
}

// Under the names that they have where they are installed.
void writePages(const std::string& manual, const std::string& folder)
{
    qelpic::CommandLine line;
    store(folder + "/qelpic.1", manualPage(textOf(manual), line));
    store(folder + "/qelpic", bashCompletion(line));
    store(folder + "/_qelpic", zshCompletion(line));
    store(folder + "/qelpic.fish", fishCompletion(line));
}

}
}

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: qelpic_pages MANUAL FOLDER\n", stderr);
        return 2;
    }
    try {
        qel::pages::writePages(argv[1], argv[2]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qelpic_pages: %s\n", error.what());
        return 1;
    }
}
