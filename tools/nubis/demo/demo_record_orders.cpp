// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_record_orders.h"

#include <utility>
#include <vector>

#include "command_error.h"
#include "database_calls.h"
#include "demo_writer.h"
#include "error_text.h"
#include "row_checker.h"

namespace NubisTool {
namespace {

Json::Value EntryJson(const std::string &recordId, const LocalStore::Entry &entry)
{
    Json::Value record(Json::objectValue);
    record["recordId"] = recordId;
    record["recordType"] = entry.recordType;
    record["version"] = Json::UInt64(entry.version);
    record["fields"] = entry.fields;
    return record;
}

} // namespace

Json::Value RefusalJson(const Nubis::NBError &error)
{
    if (IsTransportError(error)) {
        ThrowIfError(error, "asking the service");
    }
    Json::Value refusal(Json::objectValue);
    refusal["reason"] = error.GetErrorDetails().empty() ? "" : error.GetErrorDetails().front().reason;
    refusal["text"] = ErrorText(error);
    return refusal;
}

DemoRecordOrders::DemoRecordOrders(Session &session, DemoRecords &records) : session_(session), records_(records)
{}

Json::Value DemoRecordOrders::Pick(const std::string &recordType, size_t count)
{
    Json::Value answer(Json::objectValue);
    Json::Value &list = answer["records"] = Json::Value(Json::arrayValue);
    records_.With([&](LocalStore &store) {
        for (const auto &[id, entry] : store.Entries()) {
            if (entry.recordType == recordType && list.size() < count) {
                list.append(EntryJson(id, entry));
            }
        }
    });
    if (list.size() < count) {
        throw CommandError("too few records of type " + recordType, "give the demo more data");
    }
    return answer;
}

Json::Value DemoRecordOrders::Read(const std::string &recordId)
{
    return records_.With([&recordId](LocalStore &store) {
        auto entry = store.Entries().find(recordId);
        if (entry == store.Entries().end()) {
            throw CommandError("the device does not hold " + recordId, "");
        }
        return EntryJson(recordId, entry->second);
    });
}

Json::Value DemoRecordOrders::Fetch(const std::string &recordId, const std::string &recordType)
{
    std::vector<Nubis::NBRecord> records(1);
    records[0].SetRecordId(recordId);
    records[0].SetRecordType(recordType);
    Async::RecordsResult outcome = Wait(Async::FetchRecordWithIds(session_.Database(), std::move(records), {}));
    ThrowIfError(ErrorFor(outcome, recordId), "reading " + recordId);
    records_.With([&](LocalStore &store) { store.Take(outcome.results.at(recordId).GetRecord()); });
    return Read(recordId);
}

Json::Value DemoRecordOrders::Save(const Json::Value &record, Nubis::NBSavePolicy policy, const std::string &action)
{
    // Where only some fields are to be written, the others are not there.
    auto completeness = policy == Nubis::NB_SAVE_CHANGED_FIELDS ? Completeness::PARTIAL : Completeness::WHOLE;
    RowChecker checker(session_.RecordType(record["recordType"].asString()), "", completeness);
    std::vector<RowProblem> problems;
    std::vector<ImportItem> items = CheckRows(checker, {{"order", 1, record, false}}, problems);
    ThrowIfProblems(problems);
    items[0].record.SetVersion(record["version"].asUInt64());
    std::string recordId = items[0].record.GetRecordId();
    Async::RecordsResult outcome =
        Wait(Async::SaveRecords(session_.Database(), {std::move(items[0].record)}, policy, ContextOf(action)));
    Nubis::NBError error = ErrorFor(outcome, recordId);
    Json::Value answer = error.HasError() ? RefusalJson(error) : Json::Value(Json::objectValue);
    answer["saved"] = !error.HasError();
    if (!error.HasError()) {
        answer["version"] = Json::UInt64(outcome.results.at(recordId).GetRecord().GetVersion());
    }
    return answer;
}

Json::Value DemoRecordOrders::Lock()
{
    ThrowIfError(session_.Database()->GetLock(lock_), "taking the lock");
    Json::Value answer(Json::objectValue);
    answer["interval"] = lock_.lockInterval;
    return answer;
}

Json::Value DemoRecordOrders::Unlock()
{
    ThrowIfError(session_.Database()->DeleteLock(lock_), "giving the lock back");
    lock_ = {};
    return Json::Value(Json::objectValue);
}

} // namespace NubisTool
