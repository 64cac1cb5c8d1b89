// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "common_options.h"

#include <charconv>
#include <iterator>
#include <set>
#include <sstream>

#include "command_error.h"

namespace NubisTool {

CLI::Validator WholeNumber(uint64_t least, uint64_t most)
{
    auto check = [least, most](std::string &text) -> std::string {
        uint64_t number = 0;
        const char *end = text.data() + text.size();
        auto result = std::from_chars(text.data(), end, number);
        if (result.ec == std::errc() && result.ptr == end && number >= least && number <= most) {
            return "";
        }
        return "expected a whole number from " + std::to_string(least) + " to " + std::to_string(most) + ", found \"" +
               text + "\"";
    };
    return {check, ""};
}

std::vector<std::string> ChoicesOf(CLI::Option &option)
{
    try {
        // CLI11 tells the end of an option's validators by an exception alone.
        for (int i = 0;; ++i) {
            const std::string &name = option.get_validator(i)->get_name();
            if (name.rfind(CHOICES_NAME, 0) == 0) {
                std::istringstream words(name.substr(std::string(CHOICES_NAME).size()));
                return {std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()};
            }
        }
    } catch (const CLI::OptionNotFound &) {
        return {};
    }
}

CLI::Validator Seconds(double least, double most)
{
    auto check = [least, most](std::string &text) -> std::string {
        double number = 0;
        // Asked this way round, because what is no number is neither less nor more than anything.
        if (CLI::detail::lexical_cast(text, number) && number >= least && number <= most) {
            return "";
        }
        std::ostringstream expected;
        expected << "expected a number of seconds from " << least << " to " << most << ", found \"" << text << '"';
        return expected.str();
    };
    return {check, ""};
}

void AddUserOption(CLI::App &command, int &user)
{
    command.add_option("--user", user, "Account to work for")
        ->check(WholeNumber(0, std::numeric_limits<int>::max()))
        ->type_name("ID")
        ->capture_default_str();
}

void AddJsonOption(CLI::App &command, bool &json)
{
    command.add_flag("--json", json, "Write JSON for programs instead of text for people");
}

void AddAccountOptions(CLI::App &command, CommonOptions &options)
{
    static const std::map<std::string, Nubis::NBCloudSyncDemon> DEMONS = {{"data", Nubis::NB_SYNC_DEMON_DATA},
        {"file", Nubis::NB_SYNC_DEMON_FILE}, {"asset", Nubis::NB_SYNC_DEMON_ASSET}};
    AddUserOption(command, options.user);
    command.add_option("--demon", options.demon, "Sync service to speak as: data, file or asset [data]")
        ->transform(OneOf(DEMONS))
        ->type_name("KIND");
}

void AddServiceOptions(CLI::App &command, CommonOptions &options)
{
    AddAccountOptions(command, options);
    AddJsonOption(command, options.json);
}

CLI::Option *AddBundleOption(CLI::App &command, CommonOptions &options)
{
    return command.add_option("--bundle", options.bundle, "Application bundle whose data it is")->type_name("NAME");
}

void AddContainerOptions(CLI::App &command, CommonOptions &options)
{
    AddBundleOption(command, options)->required();
    command.add_option("--container", options.container, "Container of the bundle [its default container]")
        ->type_name("NAME");
}

void AddDatabaseOptions(CLI::App &command, CommonOptions &options)
{
    static const std::map<std::string, Nubis::NBDatabaseScope> SCOPES = {{"public", Nubis::NB_DATABASE_PUBLIC},
        {"private", Nubis::NB_DATABASE_PRIVATE}, {"shared", Nubis::NB_DATABASE_SHARED}};
    AddServiceOptions(command, options);
    AddContainerOptions(command, options);
    command.add_option("--scope", options.scope, "Database: public, private or shared [private]")
        ->transform(OneOf(SCOPES))
        ->type_name("SCOPE");
}

void RequireDistinct(const std::vector<std::string> &ids, const std::string &noun, const std::string &shownBy)
{
    std::set<std::string> seen;
    for (const std::string &id : ids) {
        if (id.empty()) {
            throw UsageError("a " + noun + " is empty", "leave it out; `" + shownBy + "` shows the ids");
        }
        // One of the two would be told the other's result.
        if (!seen.insert(id).second) {
            throw UsageError("the " + noun + " " + id + " is given twice", "give every id once");
        }
    }
}

std::string Example(const std::string &commandLine)
{
    return "Example:\n  " + commandLine;
}

} // namespace NubisTool
