// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_COMMON_OPTIONS_H
#define NUBIS_TOOL_COMMON_OPTIONS_H

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "CLI/CLI.hpp"

#include "nb_types.h"

namespace NubisTool {

// What most commands need to know of where to work.
struct CommonOptions {
    int user = 100;
    std::string bundle;
    std::string container; // empty: the bundle's default container
    Nubis::NBDatabaseScope scope = Nubis::NB_DATABASE_PRIVATE;
    Nubis::NBCloudSyncDemon demon = Nubis::NB_SYNC_DEMON_DATA;
    bool json = false;
};

// CLI11's own checks speak of types and of enumerators; these speak to people.
CLI::Validator WholeNumber(uint64_t least, uint64_t most = std::numeric_limits<uint64_t>::max());

constexpr const char *CHOICES_NAME = "one of";

template <typename Choice>
CLI::Validator OneOf(const std::map<std::string, Choice> &choices)
{
    auto translate = [choices](std::string &text) -> std::string {
        auto choice = choices.find(text);
        if (choice != choices.end()) {
            text = std::to_string(static_cast<int>(choice->second));
            return "";
        }
        std::string names;
        for (const auto &[name, value] : choices) {
            names += (names.empty() ? "" : ", ") + name;
        }
        return "expected one of " + names + ", found \"" + text + "\"";
    };
    // The name is where ChoicesOf finds them.
    std::string name = CHOICES_NAME;
    for (const auto &[choice, value] : choices) {
        name += " " + choice;
    }
    return {translate, "", name};
}

// What an option with OneOf may be; empty for others.
std::vector<std::string> ChoicesOf(CLI::Option &option);

// Of a positive length; fractions are welcome.
CLI::Validator Seconds(double least, double most);

// --user alone: for commands that deal with the service's process.
void AddUserOption(CLI::App &command, int &user);

void AddJsonOption(CLI::App &command, bool &json);

// --user, --demon.
void AddAccountOptions(CLI::App &command, CommonOptions &options);

// --user, --demon, --json: for commands that talk to the service.
void AddServiceOptions(CLI::App &command, CommonOptions &options);

// --bundle.
CLI::Option *AddBundleOption(CLI::App &command, CommonOptions &options);

// --bundle, --container: for commands that work on a container as a whole.
void AddContainerOptions(CLI::App &command, CommonOptions &options);

// Those of the service and the container, and --scope: for commands that work in a database.
void AddDatabaseOptions(CLI::App &command, CommonOptions &options);

// Throws UsageError for ids whose results could not be told apart: an empty one, or one that is given twice.
void RequireDistinct(const std::vector<std::string> &ids, const std::string &noun, const std::string &shownBy);

// The text under a command's help that shows how it is used.
std::string Example(const std::string &commandLine);

} // namespace NubisTool

#endif
