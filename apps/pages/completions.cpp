// SPDX-License-Identifier: Apache-2.0
// What shells complete: commands, options, and the words that options take; else files.
#include "pages/pages.h"

namespace qel::pages {
namespace {

std::string joined(const std::vector<std::string>& words, const char* between = " ")
{
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
    return text;
}

enum class Value { none, words, folder, file, other };

Value valueOf(const CLI::Option& option, const qelpic::Choices& choices)
{
    if (!takesValue(option)) return Value::none;
    if (choices.contains(&option)) return Value::words;
    std::string type = option.get_type_name();
    return type == "FOLDER" ? Value::folder : type == "FILE" ? Value::file : Value::other;
}

// In single quotes, of which there are none within.
std::string quoted(std::string text)
{
    replaceAll(text, "'", "'\\''");
    return "'" + text + "'";
}

std::string bashCase(const CLI::App& command, const CLI::Option& option, const qelpic::Choices& choices)
{
    std::vector<std::string> patterns;
    for (const std::string& name : namesOf(option)) patterns.push_back(command.get_name() + ":" + name);
    std::string line = "        " + joined(patterns, " | ") + ") ";
    switch (valueOf(option, choices)) {
    case Value::words:
        return line + "words='" + joined(choices.at(&option)) + "' ;;\n";
    case Value::folder:
        return line + "compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- \"$current\"); return ;;\n";
    case Value::other:
        return line + "compopt +o default; return ;;\n";
    case Value::file:
        return line + "return ;;\n";
    default:
        return "";
    }
}

// Of a place in a description of zsh.
std::string zshText(std::string text)
{
    for (const char* special : {"\\", "[", "]", ":"}) replaceAll(text, special, std::string("\\") + special);
    return text;
}

std::string zshOption(const CLI::Option& option, const qelpic::Choices& choices)
{
    std::vector<std::string> names = namesOf(option);
    std::string value = option.get_type_name(), line = "            ";
    switch (valueOf(option, choices)) {
    case Value::words:
        value = ":" + zshText(value) + ":(" + joined(choices.at(&option)) + ")";
        break;
    case Value::folder:
        value = ":" + value + ":_files -/";
        break;
    case Value::file:
        value = ":" + value + ":_files";
        break;
    case Value::other:
        value = ":" + zshText(value) + ": ";
        break;
    default:
        value = "";
    }
    std::string rest = quoted("[" + zshText(option.get_description()) + "]" + value);
    if (names.size() > 1) return line + quoted("(" + joined(names) + ")") + "{" + joined(names, ",") + "}" + rest;
    return line + names[0] + rest;
}

std::string fishOption(const CLI::App& command, const CLI::Option& option, const qelpic::Choices& choices)
{
    std::string line = "complete -c qelpic -n '__fish_seen_subcommand_from " + command.get_name() + "'";
    for (const std::string& name : option.get_snames()) line += " -s " + name;
    for (const std::string& name : option.get_lnames()) line += " -l " + name;
    switch (valueOf(option, choices)) {
    case Value::words:
        line += " -x -a " + quoted(joined(choices.at(&option)));
        break;
    case Value::folder:
        line += " -x -a '(__fish_complete_directories)'";
        break;
    case Value::file:
        line += " -r";
        break;
    case Value::other:
        line += " -x";
        break;
    default:
        break;
    }
    return line + " -d " + quoted(option.get_description()) + "\n";
}

std::vector<std::string> commandNames(const qelpic::CommandLine& line)
{
    std::vector<std::string> names;
    for (const CLI::App* command : commandsOf(line)) names.push_back(command->get_name());
    return names;
}

std::vector<std::string> allNames(const CLI::App& app)
{
    std::vector<std::string> all;
    for (const CLI::Option* option : optionsOf(app))
        for (const std::string& name : namesOf(*option)) all.push_back(name);
    return all;
}

}

std::string bashCompletion(const qelpic::CommandLine& line)
{
    std::string values, options;
    for (const CLI::App* command : commandsOf(line)) {
        for (const CLI::Option* option : optionsOf(*command)) values += bashCase(*command, *option, line.choices());
        options += "        " + command->get_name() + ") words='" + joined(allNames(*command)) + "' ;;\n";
    }
    return "# bash completion of qelpic\n"
           "_qelpic()\n{\n"
           "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words=\n"
           "    COMPREPLY=()\n"
           "    if ((COMP_CWORD == 1)); then\n"
           "        words='" +
           joined(commandNames(line)) + " " + joined(allNames(line.app())) +
           "'\n"
           "    else\n"
           "        case ${COMP_WORDS[1]}:$previous in\n" +
           values +
           "        esac\n"
           "    fi\n"
           "    if [[ -z $words && $current == -* ]]; then\n"
           "        case ${COMP_WORDS[1]} in\n" +
           options +
           "        esac\n"
           "    fi\n"
           "    [[ -z $words ]] || mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
           "}\n"
           "complete -o default -F _qelpic qelpic\n";
}

std::string zshCompletion(const qelpic::CommandLine& line)
{
    std::string commands, cases;
    for (const CLI::App* command : commandsOf(line)) {
        commands += "        " + quoted(command->get_name() + ":" + zshText(command->get_description())) + "\n";
        cases += "    " + command->get_name() + ")\n        _arguments -S \\\n";
        for (const CLI::Option* option : optionsOf(*command)) cases += zshOption(*option, line.choices()) + " \\\n";
        cases += "            '*:file:_files' ;;\n";
    }
    return "#compdef qelpic\n"
           "_qelpic() {\n"
           "    local -a commands=(\n" +
           commands +
           "    )\n"
           "    if ((CURRENT == 2)); then\n"
           "        _describe command commands\n"
           "        return\n"
           "    fi\n"
           "    shift words\n"
           "    ((CURRENT -= 1))\n"
           "    case $words[1] in\n" +
           cases +
           "    esac\n"
           "}\n"
           "_qelpic \"$@\"\n";
}

std::string fishCompletion(const qelpic::CommandLine& line)
{
    std::string text = "# fish completion of qelpic\n";
    for (const CLI::App* command : commandsOf(line))
        text += "complete -c qelpic -f -n __fish_use_subcommand -a " + command->get_name() + " -d " +
                quoted(command->get_description()) + "\n";
    for (const CLI::App* command : commandsOf(line))
        for (const CLI::Option* option : optionsOf(*command)) text += fishOption(*command, *option, line.choices());
    return text;
}

}
