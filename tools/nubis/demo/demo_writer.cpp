// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_writer.h"

#include <iterator>
#include <set>
#include <utility>

#include "command_error.h"
#include "database_calls.h"
#include "error_text.h"
#include "local_store.h"
#include "record_json.h"

namespace NubisTool {
namespace {

void ThrowUnlessAllSaved(const ImportReport &report)
{
    if (!report.refusals.empty()) {
        const Refusal &first = report.refusals.front();
        throw CommandError(CountText(report.refusals.size(), "record") + " refused, the first: " + first.recordId +
                               ": " + ErrorText(first.error),
            ErrorAdvice(first.error));
    }
    if (!report.unanswered.empty()) {
        const Nubis::NBError &error = report.unanswered.front().error;
        throw CommandError(
            CountText(report.unanswered.size(), "record") + " unanswered: " + ErrorText(error), ErrorAdvice(error));
    }
    if (report.notSent > 0) {
        throw CommandError("not sent: " + CountText(report.notSent, "record"), "");
    }
}

void AddType(Json::Value &answer, const std::string &recordType)
{
    for (const Json::Value &known : answer["types"]) {
        if (known.asString() == recordType) {
            return;
        }
    }
    answer["types"].append(recordType);
}

void AddItems(Json::Value &answer, const char *member, const std::vector<ImportItem> &items)
{
    for (const ImportItem &item : items) {
        answer[member].append(item.record.GetRecordId());
        AddType(answer, item.record.GetRecordType());
    }
}

} // namespace

void ThrowIfProblems(const std::vector<RowProblem> &problems)
{
    if (!problems.empty()) {
        throw CommandError(std::to_string(problems.size()) +
                               " rows do not fit the catalogue, the first: " + ProblemText(problems.front()),
            "");
    }
}

DemoWriter::DemoWriter(Session &session, DemoRecords &records, const Console &console)
    : session_(session), records_(records), console_(console)
{}

Json::Value DemoWriter::Import(const std::string &folder, const std::string &action)
{
    std::vector<DemoTable> tables = LoadDemoData(folder);
    std::vector<ImportItem> items = CheckedItems(tables);
    ImportPlan plan;
    ImportReport report = Save(items, plan, action);
    Json::Value answer(Json::objectValue);
    for (const DemoTable &table : tables) {
        answer["records"][table.recordType] = Json::UInt64(table.rows.size());
    }
    AddItems(answer, "added", items);
    answer["transactions"] = Json::UInt64(report.requests);
    answer["bytes"] = Json::UInt64(report.bytes);
    answer["waves"] = Json::UInt64(plan.waves.size());
    answer["saveSeconds"] = report.time.count();
    return answer;
}

Json::Value DemoWriter::Edit(const EditCounts &counts, const std::string &action)
{
    DemoEdits edits = records_.With([&counts](LocalStore &store) { return ChooseEdits(store, counts); });
    Json::Value answer(Json::objectValue);
    std::vector<ImportItem> items = CheckedItems(edits.additions);
    AddItems(answer, "added", items);
    std::vector<ImportItem> changes = CheckedItems(edits.changes);
    AddItems(answer, "changed", changes);
    for (ImportItem &item : changes) {
        item.record.SetNewCreate(false);
        item.record.SetVersion(records_.With(
            [&item](LocalStore &store) { return store.Entries().at(item.record.GetRecordId()).version; }));
        items.push_back(std::move(item));
    }
    ImportPlan plan;
    size_t transactions = Save(items, plan, action).requests;
    transactions += Remove(edits.removals, action, answer);
    answer["transactions"] = Json::UInt64(transactions);
    return answer;
}

std::vector<ImportItem> DemoWriter::CheckedItems(const std::vector<DemoTable> &tables)
{
    std::vector<ImportItem> items;
    std::vector<RowProblem> problems;
    for (const DemoTable &table : tables) {
        RowChecker checker(session_.RecordType(table.recordType), table.idField, Completeness::WHOLE);
        std::vector<ImportItem> checked = CheckRows(checker, table.rows, problems);
        std::move(checked.begin(), checked.end(), std::back_inserter(items));
    }
    for (ImportItem &item : items) {
        item.record.SetNewCreate(true);
    }
    ThrowIfProblems(problems);
    return items;
}

ImportReport DemoWriter::Save(const std::vector<ImportItem> &items, ImportPlan &plan, const std::string &action)
{
    auto database = session_.Database();
    std::vector<RowProblem> problems;
    plan = PlanImport(items, {session_.ContainerInfo().maxBatchNumber, session_.UploadSize().maxBodySize}, problems);
    ThrowIfProblems(problems);
    auto send = [&database, &action](std::vector<Nubis::NBRecord> records) {
        return Async::SaveRecords(database, std::move(records), Nubis::NB_SAVE_IF_UNCHANGED, ContextOf(action)).Start();
    };
    ImportOptions options;
    options.onSaved = [this](const Nubis::NBRecord &sent, const Nubis::NBRecord &answered) {
        records_.With([&](LocalStore &store) {
            store.Put(sent.GetRecordId(), {sent.GetRecordType(), answered.GetVersion(), RecordToJson(sent)["fields"]});
        });
    };
    ImportReport report = RunImport(items, plan, send, options, console_);
    ThrowUnlessAllSaved(report);
    return report;
}

// The number of transactions: the library sends a request for each record type.
size_t DemoWriter::Remove(const std::vector<std::string> &ids, const std::string &action, Json::Value &answer)
{
    std::vector<Nubis::NBRecord> records(ids.size());
    std::set<std::string> types;
    records_.With([&](LocalStore &store) {
        for (size_t i = 0; i < ids.size(); ++i) {
            const LocalStore::Entry &entry = store.Entries().at(ids[i]);
            records[i].SetRecordId(ids[i]);
            records[i].SetRecordType(entry.recordType);
            records[i].SetVersion(entry.version);
            types.insert(entry.recordType);
        }
    });
    Async::RecordsResult outcome = Wait(
        Async::DeleteRecords(session_.Database(), std::move(records), Nubis::NB_SAVE_IF_UNCHANGED, ContextOf(action)));
    ThrowIfError(outcome.error, "deleting records");
    for (const std::string &id : ids) {
        ThrowIfError(ErrorFor(outcome, id), "deleting " + id);
        records_.With([&id](LocalStore &store) { store.Remove(id); });
        answer["removed"].append(id);
    }
    for (const std::string &type : types) {
        AddType(answer, type);
    }
    return types.size();
}

} // namespace NubisTool
