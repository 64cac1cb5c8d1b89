// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <ostream>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "database_calls.h"
#include "error_text.h"
#include "input_text.h"
#include "record_json.h"
#include "record_options.h"
#include "row_reader.h"
#include "row_record.h"
#include "session.h"

namespace NubisTool {
namespace {

constexpr int QUERY_PAGE = 500;

Row ReadRecordArgument(const RecordOptions &options, const Console &console)
{
    const bool isArgument = !options.json.empty() && options.json != "-";
    const std::string name = isArgument ? "the argument" : "standard input";
    const std::string text = isArgument ? options.json : ReadAll(console.in, name);
    return {name, 1,
        ParseJsonObject(
            text, name, R"(give the record as {"FIELD": VALUE, ...})", isArgument ? EXIT_USAGE : EXIT_OPERATION_FAILED),
        false};
}

Nubis::NBRecord MakeRecord(const Row &row, const RecordOptions &options, const Nubis::NBSchemaNode &schemaNode)
{
    ImportItem item;
    std::vector<RowProblem> problems;
    MakeRecordOfRow(row, {options.id, options.isNew, options.policy}, schemaNode, item, problems);
    ThrowIfAny(problems, options.common.bundle);
    return std::move(item.record);
}

int Save(const RecordOptions &options, const Console &console)
{
    Row row = ReadRecordArgument(options, console);
    Session session(options.common);
    const Nubis::NBSchemaNode &schemaNode = session.RecordType(options.type);
    Nubis::NBRecord record = MakeRecord(row, options, schemaNode);
    // A new record saved "if unchanged" is refused when its id is taken.
    auto policy = record.GetNewCreate() ? Nubis::NB_SAVE_IF_UNCHANGED : options.policy;
    Async::RecordsResult outcome = Wait(Async::SaveRecords(session.Database(), {std::move(record)}, policy));
    ThrowIfError(outcome.error, "saving the record");
    if (outcome.results.size() != 1) {
        throw CommandError("the service gave no answer for the record", "read it with `nubis record get`");
    }
    const auto &[id, result] = *outcome.results.begin();
    ThrowIfError(result, "saving the record " + id);
    if (options.common.json) {
        console.out << PrettyText(RecordToJson(result.GetRecord())) << '\n';
    } else {
        console.out << "saved " << options.type << ' ' << result.GetRecord().GetRecordId() << ", version "
                    << result.GetRecord().GetVersion() << '\n';
    }
    return EXIT_DONE;
}

Nubis::NBQuery MakeQuery(const RecordOptions &options)
{
    Nubis::NBQuery query;
    query.recordType = options.type;
    query.queryText = options.where;
    for (const std::string &field : options.order) {
        bool isDescending = !field.empty() && field[0] == '-';
        query.orderings.push_back({isDescending, field.substr(isDescending ? 1 : 0)});
    }
    return query;
}

int Query(const RecordOptions &options, const Console &console)
{
    Session session(options.common);
    const Nubis::NBSchemaNode &schemaNode = session.RecordType(options.type);
    auto database = session.Database();
    std::vector<Nubis::NBRecord> records;
    std::string cursor;
    bool hasMore = true;
    while (hasMore && (options.all || records.size() < options.limit)) {
        size_t left = options.all ? QUERY_PAGE : options.limit - records.size();
        int pageSize = static_cast<int>(std::min<size_t>(left, QUERY_PAGE));
        Async::QueryResult page =
            Wait(Async::FetchRecordsWithQuery(database, options.fields, MakeQuery(options), pageSize, cursor));
        ThrowIfError(page.error, "the query");
        hasMore = !page.cursor.empty();
        if (hasMore && page.cursor == cursor) {
            throw CommandError("the service says that more records follow, but its cursor stands still",
                "restart the service with `nubis service stop` and try again");
        }
        std::move(page.records.begin(), page.records.end(), std::back_inserter(records));
        cursor = page.cursor;
    }
    PrintRecords(records, schemaNode, options, console);
    if (hasMore) {
        console.err << "nubis: there are more than " << CountText(records.size(), "record")
                    << "; --limit N shows more of them, --all every one\n";
    }
    return EXIT_DONE;
}

void AddFieldsOption(CLI::App &command, RecordOptions &options)
{
    command.add_option("--fields", options.fields, "Only these fields [all]")->delimiter(',')->type_name("A,B");
}

void AddSave(CLI::App &family, Chosen &chosen)
{
    auto options = std::make_shared<RecordOptions>();
    CLI::App *save = AddCommand(family, "save", "Create a record, or change one when an id is given",
        R"(nubis record save --bundle com.example.notes --type note '{"title": "Milk"}')");
    AddTypeOption(*save, *options);
    save->add_option("--id", options->id, "Record id [the member recordId; none creates a record]")->type_name("ID");
    save->add_flag("--new", options->isNew, "Create the record although an id is given");
    AddPolicyOption(*save, options->policy);
    save->add_option("record", options->json, "The record as a JSON object [read from standard input]")
        ->type_name("JSON");
    SetAction(*save, chosen, options, Save);
}

} // namespace

void AddPolicyOption(CLI::App &command, Nubis::NBSavePolicy &policy)
{
    static const std::map<std::string, Nubis::NBSavePolicy> POLICIES = {{"unchanged", Nubis::NB_SAVE_IF_UNCHANGED},
        {"merge", Nubis::NB_SAVE_CHANGED_FIELDS}, {"overwrite", Nubis::NB_SAVE_OVERWRITE}};
    command
        .add_option("--policy", policy,
            "For a record that is there: unchanged (only if \"version\" is still its version), merge (the given "
            "fields) or overwrite [merge]")
        ->transform(OneOf(POLICIES))
        ->type_name("POLICY");
}

void AddTypeOption(CLI::App &command, RecordOptions &options)
{
    AddDatabaseOptions(command, options.common);
    command.add_option("--type", options.type, "Record type")->required()->type_name("TYPE");
}

void PrintRecords(const std::vector<Nubis::NBRecord> &records, const Nubis::NBSchemaNode &schemaNode,
    const RecordOptions &options, const Console &console)
{
    if (options.common.json) {
        Json::Value json(Json::arrayValue);
        for (const Nubis::NBRecord &record : records) {
            json.append(RecordToJson(record));
        }
        console.out << PrettyText(json) << '\n';
    } else if (records.empty()) {
        console.out << "no records\n";
    } else {
        PrintRecordTable(console, records, schemaNode, options.fields);
    }
}

void AddRecordCommands(CLI::App &app, Chosen &chosen)
{
    CLI::App *family = AddCommand(app, "record", "Import, save, read and query records",
        "nubis record query --bundle com.example.notes --type note --order -stars");
    family->require_subcommand(1);
    AddImportCommand(*family, chosen);
    AddSave(*family, chosen);

    AddRecordByIdCommands(*family, chosen);
    AddNewIdsCommand(*family, chosen);
    AddModifyCommand(*family, chosen);
    AddCopyCommand(*family, chosen);

    auto options = std::make_shared<RecordOptions>();
    CLI::App *query = AddCommand(*family, "query", "Read the records that meet conditions",
        "nubis record query --bundle com.example.notes --type note --where 'title~Milk&stars>=4' --order -stars");
    AddTypeOption(*query, *options);
    AddFieldsOption(*query, *options);
    query
        ->add_option("--where", options->where,
            "Conditions joined by &, no spaces around the signs: name=Ann&age>=30&city!=Rome&tags~x")
        ->type_name("QUERY");
    query->add_option("--order", options->order, "Fields to order by, -FIELD for descending")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("A,-B");
    query->add_option("--limit", options->limit, "At most so many records")
        ->check(WholeNumber(1))
        ->type_name("N")
        ->capture_default_str();
    query->add_flag("--all", options->all, "All records, however many");
    SetAction(*query, chosen, options, Query);
}

} // namespace NubisTool
