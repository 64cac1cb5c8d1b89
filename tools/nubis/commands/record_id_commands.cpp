// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <ostream>
#include <utility>

#include "command_error.h"
#include "database_calls.h"
#include "error_text.h"
#include "record_failures.h"
#include "record_options.h"
#include "session.h"

namespace NubisTool {
namespace {

using IdOperation = std::function<Async::RecordsResult(std::vector<Nubis::NBRecord> records)>;

struct IdOutcome {
    // Those that succeeded, in the order of the ids.
    std::vector<Nubis::NBRecord> records;
    RecordFailures failures;
};

void Judge(const std::string &id, const Async::RecordsResult &requestOutcome, IdOutcome &outcome)
{
    Nubis::NBError error = ErrorFor(requestOutcome, id);
    if (!error.HasError()) {
        outcome.records.push_back(requestOutcome.results.at(id).GetRecord());
        return;
    }
    outcome.failures.Add(id, error);
}

// Performs the operation on all of the ids, as many at a time as a request may carry.
IdOutcome PerformById(Session &session, const RecordOptions &options, const IdOperation &operation)
{
    IdOutcome outcome;
    size_t most = std::max<size_t>(session.ContainerInfo().maxBatchNumber, 1);
    for (size_t start = 0; start < options.ids.size(); start += most) {
        size_t count = std::min(most, options.ids.size() - start);
        std::vector<Nubis::NBRecord> records(count);
        for (size_t i = 0; i < count; ++i) {
            records[i].SetRecordId(options.ids[start + i]);
            records[i].SetRecordType(options.type);
            records[i].SetVersion(options.ifVersion);
        }
        Async::RecordsResult requestOutcome = operation(std::move(records));
        for (size_t i = 0; i < count; ++i) {
            Judge(options.ids[start + i], requestOutcome, outcome);
        }
    }
    return outcome;
}

Async::RecordsResult FetchOne(const std::shared_ptr<Nubis::NBDatabase> &database, Nubis::NBRecord record)
{
    Async::FetchResult fetched = Wait(Async::FetchRecordWithId(database, std::move(record), {}));
    Async::RecordsResult outcome{{}, fetched.error};
    outcome.results.emplace(fetched.recordId, Nubis::NBRecordOperResult(fetched.error, std::move(fetched.record)));
    return outcome;
}

int Get(const RecordOptions &options, const Console &console)
{
    RequireIds(options.ids);
    Session session(options.common);
    const Nubis::NBSchemaNode &schemaNode = session.RecordType(options.type);
    auto database = session.Database();
    IdOutcome outcome = PerformById(session, options, [&](std::vector<Nubis::NBRecord> records) {
        return records.size() == 1 ? FetchOne(database, std::move(records.front()))
                                   : Wait(Async::FetchRecordWithIds(database, std::move(records), {}));
    });
    if (options.common.json || !outcome.records.empty()) {
        PrintRecords(outcome.records, schemaNode, options, console);
    }
    outcome.failures.ThrowIfAny("not every record could be read");
    return EXIT_DONE;
}

int Delete(const RecordOptions &options, const Console &console)
{
    RequireIds(options.ids);
    if (options.ifVersion != 0 && options.ids.size() != 1) {
        throw UsageError("--if-version is for one record", "delete the records one by one, or leave it out");
    }
    Session session(options.common);
    const Nubis::NBSchemaNode &schemaNode = session.RecordType(options.type);
    auto database = session.Database();
    auto policy = options.ifVersion == 0 ? Nubis::NB_SAVE_OVERWRITE : Nubis::NB_SAVE_IF_UNCHANGED;
    IdOutcome outcome = PerformById(session, options, [&](std::vector<Nubis::NBRecord> records) {
        return Wait(Async::DeleteRecords(database, std::move(records), policy));
    });
    if (options.common.json) {
        PrintRecords(outcome.records, schemaNode, options, console);
    } else {
        console.out << "deleted " << CountText(outcome.records.size(), "record") << '\n';
    }
    outcome.failures.ThrowIfAny("not every record could be deleted");
    return EXIT_DONE;
}

void AddIds(CLI::App &command, RecordOptions &options)
{
    AddTypeOption(command, options);
    command.add_option("ids", options.ids, "Record ids")->required()->type_name("ID");
}

} // namespace

void RequireIds(const std::vector<std::string> &ids)
{
    RequireDistinct(ids, "record id", "nubis record query");
}

void AddRecordByIdCommands(CLI::App &record, Chosen &chosen)
{
    auto options = std::make_shared<RecordOptions>();
    CLI::App *get = AddCommand(record, "get", "Read records by their ids",
        "nubis record get --bundle com.example.notes --type note note-1 note-2");
    AddIds(*get, *options);
    SetAction(*get, chosen, options, Get);

    CLI::App *remove = AddCommand(record, "delete", "Delete records by their ids",
        "nubis record delete --bundle com.example.notes --type note note-1 note-2");
    AddIds(*remove, *options);
    remove->add_option("--if-version", options->ifVersion, "Only if this is still the record's version")
        ->check(WholeNumber(1))
        ->type_name("N");
    SetAction(*remove, chosen, options, Delete);
}

} // namespace NubisTool
