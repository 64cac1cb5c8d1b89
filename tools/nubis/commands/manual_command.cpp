// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "command_error.h"
#include "command_tree.h"

namespace NubisTool {
namespace {

// What the help of commands does not tell, because it is the same for all.
constexpr const char *COMMON_SECTIONS = R"(.SH ENVIRONMENT
.TP
.B NUBIS_STATE_DIR
Folder of the data, events and logs of services
[$XDG_STATE_HOME/nubis, else ~/.local/state/nubis]
.TP
.B NUBIS_RUNTIME_DIR
Folder of sockets and locks, of mode 0700 [$XDG_RUNTIME_DIR/nubis, else /tmp/nubis\-UID]
.TP
.B NUBIS_MANIFEST_PATH
Folders of manifests, which name the programs of services, separated by colons
[share/nubis/manifests of where the library is installed]
.TP
.B NUBIS_LOG_LEVEL
Of what the library writes to its log: debug, info, warn, error, fatal or none [fatal]
.TP
.B NUBIS_LOG_FILE
Where the log goes [standard error]
.TP
.B NUBIS_SERVICE_STDERR
.B inherit
lets services that are started write to standard error, not to a log in the state folder
.TP
.B NUBIS_DEVICE_NAME
What services take for the name of this device [the name of the machine]
.SH FILES
.TP
.I ~/.local/state/nubis/drive
The data of the drive service
.TP
.I ~/.local/state/nubis/drive/catalogue
What it serves, a file for each bundle
.SH EXIT STATUS
.TP
.B 0
Done
.TP
.B 1
The operation failed, in whole or in part; standard error says why, and what to do next
.TP
.B 2
The command line makes no sense
.TP
.B 130
Interrupted by SIGINT
.TP
.B 141
Whoever read the output has gone
.PP
.B exec
returns the status of the command that it ran, 127 if there is no such program and 126 if it cannot be run.
)";

// Text for a page of the manual: without it, backslashes and leading dots would be requests to the formatter, and
// hyphens would be typeset as what no shell understands when it is copied.
std::string Roff(const std::string &text)
{
    std::string escaped;
    for (size_t i = 0; i < text.size(); ++i) {
        if ((i == 0 || text[i - 1] == '\n') && (text[i] == '.' || text[i] == '\'')) {
            escaped += "\\&";
        }
        switch (text[i]) {
            case '\\':
                escaped += "\\e";
                break;
            case '-':
                escaped += "\\-";
                break;
            case '\'':
                escaped += "\\(aq";
                break;
            case '`':
                escaped += "\\(ga";
                break;
            case '^':
                escaped += "\\(ha";
                break;
            case '~':
                escaped += "\\(ti";
                break;
            default:
                escaped += text[i];
        }
    }
    return escaped;
}

std::string PageOf(const CLI::App &family)
{
    return "nubis-" + family.get_name();
}

void WriteHead(const std::string &page, const std::string &description, std::ostream &out)
{
    std::string title = page;
    for (char &letter : title) {
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
    out << ".TH " << title << " 1 \"\" \"nubis " NUBIS_TOOL_VERSION "\" \"Nubis\"\n"
        << ".nh\n.ad l\n.SH NAME\n"
        << page << " \\- " << Roff(description.substr(0, description.find_first_of(".;"))) << '\n';
}

void WriteUsage(const CLI::App &command, const std::string &name, std::ostream &out)
{
    std::string usage = CommandFormatter().make_usage(&command, "");
    usage.erase(0, usage.find(':') + 1);
    out << ".B " << Roff(name) << "\n" << Roff(CLI::detail::trim(usage)) << '\n';
}

void WriteOptions(const CLI::App &command, std::ostream &out)
{
    const CLI::Formatter formatter;
    for (const CLI::Option *option : command.get_options()) {
        if (option == command.get_help_ptr()) {
            continue;
        }
        std::string names = option->get_positional() ? option->get_name(true) : "";
        for (const std::string &name : NamesOf(*option)) {
            names += (names.empty() ? "" : ", ") + name;
        }
        out << ".TP\n\\fB" << Roff(names) << "\\fR" << Roff(formatter.make_option_opts(option)) << '\n'
            << Roff(option->get_description()) << '\n';
    }
}

// Of the lines under a command's help, those that are set in are what somebody types.
void WriteFooter(const CLI::App &command, std::ostream &out)
{
    std::istringstream lines(command.get_footer());
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("  ", 0) == 0) {
            out << ".PP\n.RS 4\n.EX\n" << Roff(line.substr(2)) << "\n.EE\n.RE\n";
        } else if (!line.empty()) {
            out << ".PP\n" << Roff(line) << '\n';
        }
    }
}

void WriteFamilyPage(CLI::App &family, std::ostream &out)
{
    WriteHead(PageOf(family), family.get_description(), out);
    std::vector<CommandNode> leaves;
    for (const CommandNode &node : CommandTree(family)) {
        if (VisibleCommands(*node.command).empty()) {
            leaves.push_back({node.command, "nubis " + family.get_name() + node.path});
        }
    }
    out << ".SH SYNOPSIS\n";
    for (size_t i = 0; i < leaves.size(); ++i) {
        out << (i == 0 ? "" : ".br\n");
        WriteUsage(*leaves[i].command, leaves[i].path, out);
    }
    const bool alone = leaves.size() == 1 && leaves[0].command == &family;
    out << (alone ? ".SH OPTIONS\n" : ".SH COMMANDS\n");
    for (const CommandNode &leaf : leaves) {
        if (!alone) {
            out << ".SS " << Roff(leaf.path) << '\n' << Roff(leaf.command->get_description()) << '\n';
        }
        WriteOptions(*leaf.command, out);
        WriteFooter(*leaf.command, out);
    }
    if (!alone) {
        WriteFooter(family, out);
    }
    out << ".SH SEE ALSO\n.BR nubis (1),\n.BR nubis\\-drive\\-service (8)\n";
}

void WriteMainPage(CLI::App &app, std::ostream &out)
{
    WriteHead("nubis", app.get_description(), out);
    out << ".SH SYNOPSIS\n";
    WriteUsage(app, "nubis", out);
    out << ".SH COMMANDS\n";
    for (CLI::App *family : VisibleCommands(app)) {
        out << ".TP\n.BR " << Roff(PageOf(*family)) << " (1)\n" << Roff(family->get_description()) << '\n';
    }
    out << ".SH OPTIONS\n";
    WriteOptions(app, out);
    out << ".TP\n.B \\-\\-help\nExplain a command, and give an example\n" << COMMON_SECTIONS << ".SH EXAMPLES\n";
    WriteFooter(app, out);
    out << ".SH SEE ALSO\n.BR nubis\\-drive\\-service (8)\n";
}

template <typename Write>
void WritePage(CLI::App &command, const std::string &path, Write write)
{
    std::ofstream file(path);
    write(command, file);
    if (!file.flush()) {
        throw CommandError(
            "cannot write " + path + ": " + std::strerror(errno), "name a folder that can be written to");
    }
}

int WriteManual(CLI::App &app, const std::string &folder)
{
    WritePage(app, folder + "/nubis.1", WriteMainPage);
    for (CLI::App *family : VisibleCommands(app)) {
        WritePage(*family, folder + "/" + PageOf(*family) + ".1", WriteFamilyPage);
    }
    return EXIT_DONE;
}

} // namespace

void AddManualCommand(CLI::App &app, Chosen &chosen)
{
    // For builds and packages only, so that help does not show it.
    CLI::App *manual = app.add_subcommand("manual", "Write the pages of the manual into a folder")->group("");
    auto folder = std::make_shared<std::string>();
    manual->add_option("FOLDER", *folder, "The folder")->required();
    SetAction(*manual, chosen, [&app, folder](const Console &) { return WriteManual(app, *folder); });
}

} // namespace NubisTool
