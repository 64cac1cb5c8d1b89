// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <memory>
#include <ostream>
#include <utility>

#include <json/json.h>

#include "command_error.h"
#include "database_calls.h"
#include "error_text.h"
#include "importer.h"
#include "record_failures.h"
#include "record_json.h"
#include "record_options.h"
#include "row_reader.h"
#include "session.h"

namespace NubisTool {
namespace {

struct CopyOptions {
    RecordOptions record;
    std::vector<std::string> newIds;
};

// What every copy is to have in place of its source's.
Nubis::NBRecord ReadChanges(const RecordOptions &options, const Nubis::NBSchemaNode &schemaNode)
{
    Row row{"--set", 1, Json::Value(Json::objectValue), false};
    if (!options.json.empty()) {
        row.values = ParseJsonObject(
            options.json, "--set", R"(put JSON into single quotes, as in --set '{"title": "Copy"}')", EXIT_USAGE);
    }
    ImportItem item;
    std::vector<RowProblem> problems;
    RowChecker(schemaNode, "", Completeness::PARTIAL).Check(row, item, problems);
    ThrowIfAny(problems, options.common.bundle);
    return std::move(item.record);
}

// A copy for each source, all with an id, so that every answer can be matched to its source.
std::vector<ImportItem> MakeCopies(
    const CopyOptions &options, const Nubis::NBSchemaNode &schemaNode, Nubis::NBDatabase &database)
{
    Nubis::NBRecord changes = ReadChanges(options.record, schemaNode);
    std::vector<ImportItem> copies;
    for (size_t i = 0; i < options.record.ids.size(); ++i) {
        changes.SetRecordId(i < options.newIds.size() ? options.newIds[i] : "");
        changes.SetNewCreate(true);
        copies.push_back({changes, "", 0});
    }
    GiveIds(database, copies);
    return copies;
}

int Copy(const CopyOptions &options, const Console &console)
{
    const std::vector<std::string> &sources = options.record.ids;
    RequireIds(sources);
    RequireIds(options.newIds);
    if (options.newIds.size() > sources.size()) {
        throw UsageError("there are more --to-id than records to copy", "name the source of each copy");
    }
    Session session(options.record.common);
    const Nubis::NBSchemaNode &schemaNode = session.RecordType(options.record.type);
    auto database = session.Database();
    std::vector<ImportItem> copies = MakeCopies(options, schemaNode, *database);
    std::vector<Nubis::NBCopyRecord> orders;
    for (size_t i = 0; i < copies.size(); ++i) {
        orders.push_back({copies[i].record, sources[i]});
    }
    Async::RecordsResult outcome = Wait(Async::CopyRecords(database, std::move(orders)));
    ThrowIfError(outcome.error, "copying");
    RecordFailures failures;
    std::vector<Nubis::NBRecord> made;
    for (size_t i = 0; i < copies.size(); ++i) {
        const std::string id = copies[i].record.GetRecordId();
        if (Nubis::NBError error = ErrorFor(outcome, id); error.HasError()) {
            failures.Add(sources[i] + " to " + id, error);
            continue;
        }
        made.push_back(outcome.results.at(id).GetRecord());
        if (!options.record.common.json) {
            console.out << "copied " << options.record.type << ' ' << sources[i] << " to " << id << '\n';
        }
    }
    if (options.record.common.json) {
        PrintRecords(made, schemaNode, options.record, console);
    }
    failures.ThrowIfAny("not every record could be copied");
    return EXIT_DONE;
}

} // namespace

void AddCopyCommand(CLI::App &record, Chosen &chosen)
{
    auto options = std::make_shared<CopyOptions>();
    CLI::App *command =
        AddCommand(record, "copy", "Create records with the fields and relations of others, in one request",
            R"(nubis record copy --bundle com.example.notes --type note note-1 --set '{"title": "Copy"}')");
    AddTypeOption(*command, options->record);
    command->add_option("ids", options->record.ids, "Ids of the records to copy")->required()->type_name("ID");
    command
        ->add_option("--to-id", options->newIds,
            "Id of the first copy; given again, that of the next one [the library makes ids]")
        ->allow_extra_args(false)
        ->type_name("ID");
    command
        ->add_option(
            "--set", options->record.json, "Fields that every copy has in place of its source's; null leaves one out")
        ->type_name("JSON");
    SetAction(*command, chosen, options, Copy);
}

} // namespace NubisTool
