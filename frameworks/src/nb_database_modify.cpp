// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_database.h"

#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"
#include "nb_database_worker.h"

// Saving and deleting records in one request.
namespace Nubis {
int NBDatabase::ModifyRecords(std::shared_ptr<NBContext> context, std::vector<NBRecord> &&recordsToSave,
    std::vector<NBRecord> &&recordsToDelete, NBSavePolicy policy, bool atomic, NBModifyCallback callback)
{
    Json::Value request = MakeRecordRequest("modifyRecords");
    request["savePolicy"] = static_cast<int>(policy);
    request["atomic"] = atomic;
    AddTraceId(context, request);
    auto savedResults = std::make_shared<NBResultMap>();
    Json::Value saveArray(Json::arrayValue);
    for (auto &record : recordsToSave) {
        if (record.GetRecordId().empty() && record.GetNewCreate()) {
            NB_LOGD("ModifyRecords record is empty, will generate record id");
        }
        std::string recordId;
        const int code = AddRecordToSave(std::move(record), saveArray, *savedResults, recordId);
        if (code != NB_LOCAL_SUCCESS) {
            return code;
        }
    }
    Json::Value deleteArray(Json::arrayValue);
    for (const auto &record : recordsToDelete) {
        deleteArray.append(MakeDeleteJson(record));
    }
    request["recordsToSave"] = std::move(saveArray);
    request["recordsToDelete"] = std::move(deleteArray);
    StartWorker(&NBDatabase::InnerModifyRecords, std::move(context), std::move(request), std::move(savedResults),
        std::move(callback));
    return NB_LOCAL_SUCCESS;
}

void NBDatabase::InnerModifyRecords(std::shared_ptr<NBContext> context, Json::Value request,
    std::shared_ptr<NBResultMap> savedResults, NBModifyCallback callback)
{
    auto deletedResults = std::make_shared<NBResultMap>();
    const NBError error = Exchange(request, DEFAULT_REQUEST_TIMEOUT, [&](const Json::Value &reply, NBError &) {
        const Json::Value *deleted = FindArray(reply, "recordsToDelete");
        for (Json::ArrayIndex i = 0; deleted != nullptr && i < deleted->size(); ++i) {
            InsertRecordOperResult(request, reply, (*deleted)[i], deletedResults);
        }
        if (const Json::Value *saved = FindArray(reply, "recordsToSave")) {
            ReadSavedRecords(request, reply, *saved, *savedResults);
        }
    });
    if (error.HasError()) {
        SetErrors(error, *savedResults);
        InsertDelRecordResult(request["recordsToDelete"], deletedResults, error);
    }
    if (callback != nullptr) {
        callback(std::move(context), shared_from_this(), std::move(savedResults), std::move(deletedResults), error);
    }
}

void NBDatabase::InsertDelRecordResult(
    const Json::Value &records, const std::shared_ptr<NBResultMap> &results, const NBError &error)
{
    if (results == nullptr || !records.isArray()) {
        return;
    }
    for (const auto &json : records) {
        std::string recordId = JsonHelper::GetStringFromJson(json, "recordId");
        if (recordId.empty()) {
            continue;
        }
        NBRecord record;
        record.SetRecordId(recordId);
        record.SetRecordType(JsonHelper::GetStringFromJson(json, "recordType"));
        results->insert_or_assign(std::move(recordId), NBRecordOperResult(error, std::move(record)));
    }
}
} // namespace Nubis
