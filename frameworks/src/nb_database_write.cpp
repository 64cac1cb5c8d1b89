// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_database.h"

#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"
#include "nb_database_worker.h"

// Writing records.
namespace Nubis {
Json::Value *AppendRecordJson(const NBRecord &record, Json::Value &recordArray)
{
    try {
        return &recordArray.append(record.ToJsonValue());
    } catch (const std::exception &e) {
        NB_LOGE("record to json failed, record id:%{public}s, %{public}s", record.GetRecordId().c_str(), e.what());
        return nullptr;
    }
}

Json::Value MakeDeleteJson(const NBRecord &record)
{
    Json::Value recordArray(Json::arrayValue);
    if (Json::Value *json = AppendRecordJson(record, recordArray)) {
        return std::move(*json);
    }
    NBRecord bare = record;
    bare.SetRecordData(NBFieldMap());
    return bare.ToJsonValue();
}

NBRecordsCallback RecordsToRecordCallback(NBSingleRecordCallback callback)
{
    return [callback = std::move(callback)](std::shared_ptr<NBContext> context, std::shared_ptr<NBDatabase> database,
               std::shared_ptr<NBResultMap> results, const NBError &error) {
        if (callback == nullptr) {
            return;
        }
        if (results == nullptr || results->size() != 1) {
            callback(std::move(context), std::move(database), "", NBRecordOperResult(), error);
            return;
        }
        auto &[recordId, result] = *results->begin();
        callback(std::move(context), std::move(database), recordId, std::move(result), error);
    };
}

int NBDatabase::SaveRecord(std::shared_ptr<NBContext> context, NBRecord &&record, NBSavePolicy policy,
    NBSingleRecordCallback callback, NBProgressCallback progressCallback)
{
    std::vector<NBRecord> records;
    records.push_back(std::move(record));
    return SaveRecords(std::move(context), std::move(records), policy, RecordsToRecordCallback(std::move(callback)),
        std::move(progressCallback));
}

int NBDatabase::SaveRecords(std::shared_ptr<NBContext> context, std::vector<NBRecord> &&records, NBSavePolicy policy,
    NBRecordsCallback callback, NBProgressCallback progressCallback)
{
    Json::Value request = MakeRecordRequest("saveRecords");
    request["savePolicy"] = static_cast<int>(policy);
    AddTraceId(context, request);
    auto results = std::make_shared<NBResultMap>();
    auto progress = std::make_shared<NBProgressMap>();
    Json::Value recordArray(Json::arrayValue);
    for (auto &record : records) {
        if (record.GetRecordId().empty() && record.GetNewCreate()) {
            NB_LOGD("SaveReords record is empty, will generate record id");
        }
        std::string recordId;
        const int code = AddRecordToSave(std::move(record), recordArray, *results, recordId);
        if (code != NB_LOCAL_SUCCESS) {
            return code;
        }
        if (progressCallback != nullptr) {
            progress->insert_or_assign(std::move(recordId), NBProgressResult());
        }
    }
    request["records"] = std::move(recordArray);
    if (progressCallback != nullptr) {
        const std::string taskId = GetTaskIdBySendData(request);
        request["taskId"] = taskId;
        AddProgressCallBack(taskId, std::move(progressCallback), context, std::move(progress));
    }
    ResetStopUploadFlag();
    StartWorker(
        &NBDatabase::InnerSaveRecords, std::move(context), std::move(request), std::move(results), std::move(callback));
    return NB_LOCAL_SUCCESS;
}

// Gives a new record its id, appends it to the array, and leaves it in the map as the result that stands until the
// service has answered for it.
int NBDatabase::AddRecordToSave(
    NBRecord &&record, Json::Value &recordArray, NBResultMap &results, std::string &recordId)
{
    recordId = record.GetRecordId();
    if (recordId.empty() && record.GetNewCreate()) {
        recordId = GenerateId("");
        if (recordId.empty()) {
            return NB_LOCAL_EMPTY_REPLY;
        }
        record.SetRecordId(recordId);
    }
    if (AppendRecordJson(record, recordArray) == nullptr) {
        return NB_LOCAL_BAD_DATA;
    }
    results.insert_or_assign(recordId, NBRecordOperResult(NBError(NB_LOCAL_UNEXPECTED_REPLY), std::move(record)));
    return NB_LOCAL_SUCCESS;
}

void NBDatabase::InnerSaveRecords(std::shared_ptr<NBContext> context, Json::Value request,
    std::shared_ptr<NBResultMap> results, NBRecordsCallback callback)
{
    const std::string taskId = JsonHelper::GetStringFromJson(request, "taskId");
    const NBError error =
        Exchange(request, DEFAULT_REQUEST_TIMEOUT, [this, &request, &results](const Json::Value &reply, NBError &) {
            if (const Json::Value *records = FindArray(reply, "records")) {
                ReadSavedRecords(request, reply, *records, *results);
            }
        });
    SetErrors(error, *results);
    if (!taskId.empty()) {
        RemoveProgressCallBack(taskId);
    }
    if (callback != nullptr) {
        callback(std::move(context), shared_from_this(), std::move(results), error);
    }
}

int NBDatabase::DeleteRecords(std::shared_ptr<NBContext> context, std::vector<NBRecord> &&records, NBSavePolicy policy,
    NBRecordsCallback callback)
{
    StartWorker(&NBDatabase::InnerDeleteRecords, std::move(context), std::make_shared<NBResultMap>(),
        GroupByType(std::move(records)), policy, std::move(callback));
    return NB_LOCAL_SUCCESS;
}

void NBDatabase::InnerDeleteRecords(std::shared_ptr<NBContext> context, std::shared_ptr<NBResultMap> results,
    RecordsByType groups, NBSavePolicy policy, NBRecordsCallback callback)
{
    Json::Value request = MakeRecordRequest("deleteRecords");
    request["savePolicy"] = static_cast<int>(policy);
    AddTraceId(context, request);
    const auto fillRequest = [](Json::Value &groupRequest, const std::vector<NBRecord> &records) {
        Json::Value recordIds(Json::arrayValue);
        Json::Value recordArray(Json::arrayValue);
        for (const auto &record : records) {
            recordIds.append(record.GetRecordId());
            recordArray.append(MakeDeleteJson(record));
        }
        groupRequest["recordIds"] = std::move(recordIds);
        groupRequest["records"] = std::move(recordArray);
    };
    const NBError error = SendGroups(request, groups, results, fillRequest);
    if (callback != nullptr) {
        callback(std::move(context), shared_from_this(), std::move(results), error);
    }
}

void NBDatabase::SetErrors(const NBError &error, NBResultMap &results)
{
    if (!error.HasError()) {
        return;
    }
    for (auto &[recordId, result] : results) {
        result.SetError(error);
    }
}

void NBDatabase::ReadSavedRecords(
    const Json::Value &request, const Json::Value &reply, const Json::Value &replyRecords, NBResultMap &results)
{
    for (const auto &replyRecord : replyRecords) {
        std::string key = JsonHelper::GetStringFromJson(replyRecord, "localRecordId");
        if (key.empty()) {
            key = JsonHelper::GetStringFromJson(replyRecord, "recordId");
        }
        const auto found = results.find(key);
        if (found == results.end()) {
            NB_LOGE("reply records error, unknown record id:%{public}s", key.c_str());
            continue;
        }
        ParseOperResult(replyRecord, found->second);
        ReportOmRecordResult(request, reply, replyRecord, found->second);
    }
}

void NBDatabase::ParseOperResult(const Json::Value &replyRecord, NBRecordOperResult &result)
{
    std::shared_lock<std::shared_mutex> lock(schemaMutex_);
    result.ParseFromJsonValue(schema_, replyRecord);
}

void NBDatabase::InsertRecordOperResult(const Json::Value &request, const Json::Value &reply,
    const Json::Value &replyRecord, const std::shared_ptr<NBResultMap> &results)
{
    if (results == nullptr) {
        return;
    }
    NBRecordOperResult result;
    ParseOperResult(replyRecord, result);
    ReportOmRecordResult(request, reply, replyRecord, result);
    std::string recordId = result.GetRecord().GetRecordId();
    if (!recordId.empty()) {
        results->insert_or_assign(std::move(recordId), std::move(result));
    }
}
} // namespace Nubis
