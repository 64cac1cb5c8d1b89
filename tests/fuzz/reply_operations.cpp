// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "reply_operations.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <json/value.h>

#include "fuzz_kit.h"
#include "fuzz_target.h"

namespace Fuzz {
namespace {
using namespace Nubis;
using Context = std::shared_ptr<NBContext>;
using DatabasePointer = std::shared_ptr<NBDatabase>;
using Records = std::shared_ptr<std::vector<NBRecord>>;
using Results = std::shared_ptr<NBResultMap>;

// How often a callback came.
int g_called = 0;

void CheckResults(const NBResultMap &results)
{
    for (const auto &[recordId, result] : results) {
        FUZZ_CHECK(!recordId.empty());
        // A reply that names a record twice can leave the fields of the first under the unknown type of the second.
        if (result.HasError()) {
            result.GetRecord().ToJsonValue();
        } else {
            CheckRecord(result.GetRecord());
        }
    }
}

void OnRecords(Context, DatabasePointer, Results results, const NBError &)
{
    ++g_called;
    CheckResults(*results);
}

void OnPage(Context, DatabasePointer, Records records, std::string, const NBError &error)
{
    ++g_called;
    FUZZ_CHECK(!error.HasError() || records->empty());
    for (const auto &record : *records) {
        CheckRecord(record);
    }
}

NBRecord Asked(const std::string &recordId)
{
    NBRecord record;
    record.SetRecordId(recordId);
    record.SetRecordType("everything");
    return record;
}

Json::Value Request()
{
    Json::Value request(Json::objectValue);
    request["function"] = "fuzz";
    request["recordId"] = "r1";
    request["recordsToDelete"].append(Json::Value(Json::objectValue))["recordId"] = "r2";
    return request;
}

Results SavedResults()
{
    auto results = std::make_shared<NBResultMap>();
    results->emplace("r1", NBRecordOperResult(NBError(NB_LOCAL_UNEXPECTED_REPLY), Asked("r1")));
    return results;
}

void FetchOne(DatabasePointer database)
{
    database->InnerFetchRecordWithId(nullptr, Request(), NBRecord(),
        [](Context, DatabasePointer, std::string id, NBRecord &record, const NBError &) {
            ++g_called;
            FUZZ_CHECK(!id.empty() && record.GetRecordId() == id);
            CheckRecord(record);
        });
}

void Modify(DatabasePointer database)
{
    database->InnerModifyRecords(nullptr, Request(), SavedResults(),
        [](Context, DatabasePointer, Results saved, Results deleted, const NBError &) {
            ++g_called;
            FUZZ_CHECK(saved->size() == 1);
            CheckResults(*saved);
            CheckResults(*deleted);
        });
}

void Changes(DatabasePointer database)
{
    database->InnerFetchDatabaseChanges(nullptr, Request(), std::make_shared<std::vector<NBRecord>>(),
        [](Context context, DatabasePointer self, Records records, std::string cursor, bool, const NBError &error) {
            OnPage(context, self, records, cursor, error);
        });
}

void PreShare(DatabasePointer database)
{
    database->InnerSetPreShared(
        nullptr, Request(), Asked("r1"), [](Context, DatabasePointer, NBRecord &record, const NBError &) {
            ++g_called;
            CheckRecord(record);
        });
}

void AskForLock(DatabasePointer database)
{
    ++g_called;
    NBLock lock{7, "session"};
    if (database->GetLock(lock).HasError()) {
        FUZZ_CHECK(lock.lockInterval == 7 && lock.lockSessionId == "session");
    }
    database->DeleteLock(lock);
}

// The ids that are made by the rules of the reply.
void MakeIds(DatabasePointer database)
{
    ++g_called;
    std::string rootId = "untouched";
    if (database->GetRootId(rootId).HasError()) {
        FUZZ_CHECK(rootId == "untouched");
    }
    std::vector<std::string> ids;
    const bool failed = database->GenerateIds(2, ids).HasError();
    FUZZ_CHECK(failed || (ids.size() == 2 && ids[0] != ids[1]));
    database->GenerateIdsWithKey({"key"}, ids);
}

void AskForUser(DatabasePointer)
{
    ++g_called;
    NBUserInfo userInfo;
    if (Kit()->GetCloudUserInfo(userInfo, true).HasError()) {
        FUZZ_CHECK(userInfo.userId.empty());
    }
    FUZZ_CHECK(userInfo.cloudStatus < 5);
}

const std::map<std::string, std::vector<NBRecord>> &Groups()
{
    static const auto *groups = new std::map<std::string, std::vector<NBRecord>>{{"everything", {Asked("r1")}}};
    return *groups;
}

const std::map<char, void (*)(DatabasePointer)> &Operations()
{
    static const auto *operations = new std::map<char, void (*)(DatabasePointer)>{
        {'q',
            [](DatabasePointer database) {
                database->InnerFetchRecordWithQuery(
                    nullptr, Request(), std::make_shared<std::vector<NBRecord>>(), OnPage);
            }},
        {'w',
            [](DatabasePointer database) {
                database->InnerFetchRecordWithIds(
                    nullptr, Request(), std::make_shared<NBResultMap>(), Groups(), OnRecords);
            }},
        {'s',
            [](DatabasePointer database) {
                database->InnerSaveRecords(nullptr, Request(), SavedResults(), OnRecords);
            }},
        {'d',
            [](DatabasePointer database) {
                database->InnerDeleteRecords(
                    nullptr, std::make_shared<NBResultMap>(), Groups(), NB_SAVE_OVERWRITE, OnRecords);
            }},
        {'y',
            [](DatabasePointer database) {
                database->InnerCopyRecords(
                    nullptr, Request(), std::make_shared<NBResultMap>(), {{Asked(""), "r1"}}, OnRecords);
            }},
        {'i', FetchOne},
        {'m', Modify},
        {'c', Changes},
        {'p', PreShare},
        {'l', AskForLock},
        {'g', MakeIds},
        {'u', AskForUser},
    };
    return *operations;
}
} // namespace

void RunOperation(char letter)
{
    const auto found = Operations().find(letter);
    if (found != Operations().end()) {
        g_called = 0;
        found->second(Database());
        FUZZ_CHECK(g_called == 1);
    }
}
} // namespace Fuzz
