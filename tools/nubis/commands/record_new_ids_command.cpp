// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "error_text.h"
#include "nb_database.h"
#include "record_json.h"
#include "session.h"

namespace NubisTool {
namespace {

constexpr int MAX_IDS = 100000;

struct IdOptions {
    CommonOptions common;
    int count = 1;
    std::vector<std::string> keys;
    bool isRoot = false;
};

std::vector<std::string> MakeIds(const IdOptions &options)
{
    for (const std::string &key : options.keys) {
        // The library would make an id that carries nothing.
        if (key.empty()) {
            throw UsageError("a key is empty", "give a key, or leave --key out for an id without one");
        }
    }
    Session session(options.common);
    auto database = session.Database();
    std::vector<std::string> ids;
    if (options.isRoot) {
        ids.emplace_back();
        ThrowIfError(database->GetRootId(ids.back()), "reading the root record's id");
    } else if (!options.keys.empty()) {
        ThrowIfError(database->GenerateIdsWithKey(options.keys, ids), "making record ids");
    } else {
        ThrowIfError(database->GenerateIds(options.count, ids), "making record ids");
    }
    return ids;
}

int NewIds(const IdOptions &options, const Console &console)
{
    const std::vector<std::string> ids = MakeIds(options);
    Json::Value json(Json::arrayValue);
    for (const std::string &id : ids) {
        json.append(id);
        if (!options.common.json) {
            console.out << id << '\n';
        }
    }
    if (options.common.json) {
        console.out << PrettyText(json) << '\n';
    }
    return EXIT_DONE;
}

} // namespace

void AddNewIdsCommand(CLI::App &record, Chosen &chosen)
{
    auto options = std::make_shared<IdOptions>();
    CLI::App *command = AddCommand(record, "new-ids", "Make record ids by the rule of the container",
        "nubis record new-ids --bundle com.example.notes --count 3");
    AddDatabaseOptions(*command, options->common);
    auto *count = command->add_option("--count", options->count, "How many")
                      ->check(WholeNumber(1, MAX_IDS))
                      ->type_name("N")
                      ->capture_default_str();
    auto *keys = command->add_option("--key", options->keys, "One id for each key, which is carried in it")
                     ->type_name("KEY")
                     ->excludes(count);
    command->add_flag("--root", options->isRoot, "The id of the container's root record instead")
        ->excludes(count)
        ->excludes(keys);
    SetAction(*command, chosen, options, NewIds);
}

} // namespace NubisTool
