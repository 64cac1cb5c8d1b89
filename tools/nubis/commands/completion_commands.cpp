// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <ostream>
#include <string>
#include <vector>

#include "command_error.h"
#include "command_tree.h"
#include "common_options.h"

namespace NubisTool {
namespace {

// Finds out which command the line names, and what the option before the cursor takes. An "=" between an option and its
// value is a word of its own.
constexpr const char *HEAD = R"(_nubis()
{
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local path="" words="" takes="" places="" index
    COMPREPLY=()
    if [[ $word == = ]]; then
        word=""
    elif [[ $previous == = && $COMP_CWORD -gt 1 ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((index = 1; index < COMP_CWORD; ++index)); do
        case "$path ${COMP_WORDS[index]}" in
)";

// What follows "--" is a command with its arguments.
constexpr const char *MIDDLE = R"(                path+=" ${COMP_WORDS[index]}"
                ;;
            *' exec --')
                if ((COMP_CWORD == index + 1)); then
                    mapfile -t COMPREPLY < <(compgen -c -- "$word")
                else
                    compopt -o filenames
                    mapfile -t COMPREPLY < <(compgen -f -- "$word")
                fi
                return
                ;;
        esac
    done
    case $path in
)";

constexpr const char *TAIL = R"(    esac
    case ${takes:-$places} in
        FILE)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            ;;
        FOLDER)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            ;;
    esac
    if [[ -z $takes ]]; then
        mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -W "$words" -- "$word")
    elif [[ $takes == one:* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "${takes#one:}" -- "$word")
    fi
}
complete -F _nubis nubis
)";

void Append(std::string &list, const std::string &text, const char *separator = " ")
{
    list += (list.empty() ? "" : separator) + text;
}

std::string Join(const std::vector<std::string> &texts)
{
    std::string joined;
    for (const std::string &text : texts) {
        Append(joined, text);
    }
    return joined;
}

// FILE, FOLDER, the choices behind "one:", or something that only the user knows.
std::string Takes(CLI::Option &option)
{
    std::vector<std::string> choices = ChoicesOf(option);
    if (!choices.empty()) {
        return "one:" + Join(choices);
    }
    const std::string type = option.get_type_name();
    return type == "FILE" || type == "FOLDER" ? type : "something";
}

// The entry of a command: the words that may follow, and what its options take.
void WriteCommand(CLI::App &command, const std::string &path, std::ostream &out)
{
    std::string words;
    std::string places;
    std::string values;
    for (const CLI::App *one : VisibleCommands(command)) {
        Append(words, one->get_name());
    }
    for (CLI::Option *option : command.get_options()) {
        if (option->get_positional()) {
            places = Takes(*option) == "FILE" ? "FILE" : places;
            Append(words, Join(ChoicesOf(*option)));
            continue;
        }
        const std::vector<std::string> names = NamesOf(*option);
        Append(words, Join(names));
        if (option->get_items_expected_max() > 0) {
            std::string pattern;
            for (const std::string &name : names) {
                Append(pattern, name, " | ");
            }
            values += "                " + pattern + ") takes='" + Takes(*option) + "' ;;\n";
        }
    }
    if (RunsCommand(command)) {
        Append(words, "--");
    }
    out << "        '" << path << "')\n            words='" << words << "'\n";
    if (!places.empty()) {
        out << "            places=" << places << '\n';
    }
    if (!values.empty()) {
        out << "            case $previous in\n" << values << "            esac\n";
    }
    out << "            ;;\n";
}

int WriteBash(CLI::App &app, const Console &console)
{
    const std::vector<CommandNode> nodes = CommandTree(app);
    std::string paths;
    for (const CommandNode &node : nodes) {
        if (!node.path.empty()) {
            Append(paths, "'" + node.path + "'", " | \\\n                ");
        }
    }
    console.out << "# Completion of nubis for bash: source <(nubis completion bash)\n"
                << HEAD << "            " << paths << ")\n"
                << MIDDLE;
    for (const CommandNode &node : nodes) {
        WriteCommand(*node.command, node.path, console.out);
    }
    console.out << TAIL;
    return EXIT_DONE;
}

} // namespace

void AddCompletionCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family =
        AddCommand(app, "completion", "Let a shell complete the commands and their options", "nubis completion bash");
    family->require_subcommand(1);
    CLI::App *bash = AddCommand(*family, "bash", "Write the script that bash is to read",
        "nubis completion bash >~/.local/share/bash-completion/completions/nubis");
    SetAction(*bash, chosen, [&app](const Console &console) { return WriteBash(app, console); });
}

} // namespace NubisTool
