// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_device.h"

#include <chrono>
#include <istream>
#include <iterator>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <json/json.h>

#include "command_error.h"
#include "common_options.h"
#include "database_calls.h"
#include "demo_data.h"
#include "demo_edits.h"
#include "error_text.h"
#include "import_plan.h"
#include "importer.h"
#include "local_store.h"
#include "record_json.h"
#include "session.h"

namespace NubisTool {
namespace {

constexpr int CHANGES_PAGE = 1000;

CommonOptions DeviceOptions(int user)
{
    CommonOptions options;
    options.user = user;
    options.bundle = DEMO_BUNDLE;
    return options;
}

class Device {
public:
    Device(int user, const Console &console) : session_(DeviceOptions(user)), console_(console)
    {}

    Json::Value Perform(const Json::Value &order)
    {
        std::string name = order["order"].asString();
        if (name == "import") {
            return Import(order["folder"].asString());
        }
        if (name == "edit") {
            return Edit({order["edits"].asUInt(), order["removals"].asUInt(), order["additions"].asUInt()});
        }
        if (name == "follow") {
            return Follow();
        }
        if (name == "write") {
            store_.Write(order["path"].asString());
            Json::Value answer(Json::objectValue);
            answer["records"] = Json::UInt64(store_.Entries().size());
            return answer;
        }
        throw UsageError("unknown order " + name, "");
    }

private:
    std::vector<ImportItem> CheckedItems(const std::vector<DemoTable> &tables)
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

    static void ThrowIfProblems(const std::vector<RowProblem> &problems)
    {
        if (!problems.empty()) {
            throw CommandError(std::to_string(problems.size()) +
                                   " rows do not fit the catalogue, the first: " + ProblemText(problems.front()),
                "");
        }
    }

    // Saves all of them or throws; what was saved is what this device holds from now on.
    ImportReport Save(const std::vector<ImportItem> &items, ImportPlan &plan)
    {
        auto database = session_.Database();
        std::vector<RowProblem> problems;
        plan =
            PlanImport(items, {session_.ContainerInfo().maxBatchNumber, session_.UploadSize().maxBodySize}, problems);
        ThrowIfProblems(problems);
        auto send = [&database](std::vector<Nubis::NBRecord> records) {
            return StartSave(*database, std::move(records), Nubis::NB_SAVE_IF_UNCHANGED);
        };
        ImportOptions options;
        options.onSaved = [this](const Nubis::NBRecord &sent, const Nubis::NBRecord &answered) {
            store_.Put(sent.GetRecordId(), {sent.GetRecordType(), answered.GetVersion(), RecordToJson(sent)["fields"]});
        };
        ImportReport report = RunImport(items, plan, send, options, console_);
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
        return report;
    }

    Json::Value Import(const std::string &folder)
    {
        std::vector<DemoTable> tables = LoadDemoData(folder);
        std::vector<ImportItem> items = CheckedItems(tables);
        ImportPlan plan;
        ImportReport report = Save(items, plan);
        Json::Value answer(Json::objectValue);
        for (const DemoTable &table : tables) {
            answer["records"][table.recordType] = Json::UInt64(table.rows.size());
        }
        answer["saved"] = Json::UInt64(report.saved);
        answer["requests"] = Json::UInt64(report.requests);
        answer["bytes"] = Json::UInt64(report.bytes);
        answer["waves"] = Json::UInt64(plan.waves.size());
        answer["saveSeconds"] = report.time.count();
        return answer;
    }

    Json::Value Edit(const EditCounts &counts)
    {
        DemoEdits edits = ChooseEdits(store_, counts);
        Json::Value answer(Json::objectValue);
        std::vector<ImportItem> items = CheckedItems(edits.additions);
        for (const ImportItem &item : items) {
            answer["added"].append(item.record.GetRecordId());
        }
        for (ImportItem &item : CheckedItems(edits.changes)) {
            std::string id = item.record.GetRecordId();
            answer["changed"].append(id);
            item.record.SetNewCreate(false);
            item.record.SetVersion(store_.Entries().at(id).version);
            items.push_back(std::move(item));
        }
        ImportPlan plan;
        Save(items, plan);
        RemoveRecords(edits.removals);
        for (const std::string &id : edits.removals) {
            answer["removed"].append(id);
        }
        return answer;
    }

    void RemoveRecords(const std::vector<std::string> &ids)
    {
        std::vector<Nubis::NBRecord> records(ids.size());
        for (size_t i = 0; i < ids.size(); ++i) {
            const LocalStore::Entry &entry = store_.Entries().at(ids[i]);
            records[i].SetRecordId(ids[i]);
            records[i].SetRecordType(entry.recordType);
            records[i].SetVersion(entry.version);
        }
        SaveOutcome outcome = Wait(StartDelete(*session_.Database(), std::move(records), Nubis::NB_SAVE_IF_UNCHANGED));
        ThrowIfError(outcome.error, "deleting records");
        for (const std::string &id : ids) {
            ThrowIfError(ErrorFor(outcome, id), "deleting " + id);
            store_.Remove(id);
        }
    }

    Json::Value Follow()
    {
        Json::Value answer(Json::objectValue);
        size_t requests = 0;
        bool hasMore = true;
        while (hasMore) {
            PageOutcome page = Wait(StartChanges(*session_.Database(), "", {}, CHANGES_PAGE, cursor_));
            ThrowIfError(page.error, "reading changes");
            if (page.hasMore && page.cursor == cursor_) {
                throw CommandError("the service's cursor stands still", "");
            }
            ++requests;
            for (const Nubis::NBRecord &record : page.records) {
                static const char *const MEMBERS[] = {"added", "changed", "removed", "nothing"};
                LocalStore::Effect effect = store_.Take(record);
                answer[MEMBERS[static_cast<size_t>(effect)]].append(record.GetRecordId());
            }
            cursor_ = page.cursor;
            hasMore = page.hasMore;
        }
        answer["requests"] = Json::UInt64(requests);
        return answer;
    }

    Session session_;
    const Console &console_;
    LocalStore store_;
    std::string cursor_;
};

Json::Value Answer(Device &device, const std::string &line)
{
    auto start = std::chrono::steady_clock::now();
    Json::Value answer(Json::objectValue);
    try {
        Json::Value order;
        std::string error;
        if (!ParseJsonText(line, order, error) || !order.isObject()) {
            throw UsageError("an order is a JSON object", "");
        }
        answer = device.Perform(order);
    } catch (const CommandError &error) {
        answer["error"] = error.what();
        answer["advice"] = error.Advice();
    } catch (const std::exception &error) {
        answer["error"] = error.what();
        answer["advice"] = "";
    }
    answer["seconds"] = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return answer;
}

} // namespace

int RunDemoDevice(int user, const Console &console)
{
    Device device(user, console);
    std::string line;
    while (std::getline(console.in, line)) {
        console.out << CompactText(Answer(device, line)) << '\n' << std::flush;
    }
    return EXIT_DONE;
}

} // namespace NubisTool
