// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_database.h"

#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"
#include "nb_database_worker.h"

// Reading records and changes.
namespace Nubis {
namespace {
std::string JoinKeys(const std::vector<std::string> &keys)
{
    std::string joined;
    const char *separator = "";
    for (const auto &key : keys) {
        joined += separator + key;
        separator = ",";
    }
    return joined;
}

std::string MakeQueryParam(const NBQuery &query)
{
    std::string param = query.queryText;
    if (query.orderings.empty()) {
        return param;
    }
    param += param.empty() ? "orderBy=" : "&orderBy=";
    for (const auto &ordering : query.orderings) {
        param += ordering.fieldName;
        param += ordering.isDescending ? " desc," : ",";
    }
    param.pop_back();
    return param;
}
} // namespace

int NBDatabase::FetchRecords(std::shared_ptr<NBContext> context, std::string recordType,
    const std::vector<std::string> &desiredKeys, int resultLimit, std::string cursor, NBQueryCallback callback)
{
    return FetchRecordsWithQuery(std::move(context), desiredKeys, NBQuery{std::move(recordType), "", {}}, resultLimit,
        std::move(cursor), std::move(callback));
}

int NBDatabase::FetchRecordsWithQuery(std::shared_ptr<NBContext> context, const std::vector<std::string> &desiredKeys,
    NBQuery query, int resultLimit, std::string cursor, NBQueryCallback callback)
{
    Json::Value request = MakeRecordRequest("fetchRecordsWithQuery");
    request["recordType"] = query.recordType;
    request["pageSize"] = resultLimit;
    request["cursor"] = cursor;
    request["fields"] = JoinKeys(desiredKeys);
    request["queryParam"] = MakeQueryParam(query);
    AddTraceId(context, request);
    StartWorker(&NBDatabase::InnerFetchRecordWithQuery, std::move(context), std::move(request),
        std::make_shared<std::vector<NBRecord>>(), std::move(callback));
    return NB_LOCAL_SUCCESS;
}

void NBDatabase::InnerFetchRecordWithQuery(
    std::shared_ptr<NBContext> context, Json::Value request, RecordList records, NBQueryCallback callback)
{
    std::string nextCursor;
    const NBError error = Exchange(request, RECORD_REQUEST_TIMEOUT, [&](const Json::Value &reply, NBError &result) {
        const Json::Value *replyRecords = FindArray(reply, "records");
        if (replyRecords == nullptr) {
            result.SetLocalError(NB_LOCAL_BAD_DATA);
            return;
        }
        nextCursor = JsonHelper::GetStringFromJson(reply, "nextCursor");
        ReadRecords(*replyRecords, *records);
    });
    if (callback != nullptr) {
        callback(std::move(context), shared_from_this(), std::move(records), std::move(nextCursor), error);
    }
}

int NBDatabase::FetchDatabaseChanges(std::shared_ptr<NBContext> context, std::string recordType,
    const std::vector<std::string> &desiredKeys, int resultLimit, std::string cursor, NBChangesCallback callback)
{
    Json::Value request = MakeChangesRequest(context, recordType, desiredKeys, resultLimit, cursor);
    StartWorker(&NBDatabase::InnerFetchDatabaseChanges, std::move(context), std::move(request),
        std::make_shared<std::vector<NBRecord>>(), std::move(callback));
    return NB_LOCAL_SUCCESS;
}

int NBDatabase::FetchDatabaseChangesWithQuery(std::shared_ptr<NBContext> context,
    const std::vector<std::string> &desiredKeys, NBQuery query, int resultLimit, std::string cursor,
    NBChangesCallback callback)
{
    Json::Value request = MakeChangesRequest(context, query.recordType, desiredKeys, resultLimit, cursor);
    request["queryParam"] = MakeQueryParam(query);
    StartWorker(&NBDatabase::InnerFetchDatabaseChanges, std::move(context), std::move(request),
        std::make_shared<std::vector<NBRecord>>(), std::move(callback));
    return NB_LOCAL_SUCCESS;
}

Json::Value NBDatabase::MakeChangesRequest(const std::shared_ptr<NBContext> &context, const std::string &recordType,
    const std::vector<std::string> &desiredKeys, int resultLimit, const std::string &cursor) const
{
    Json::Value request = MakeRecordRequest("fetchDatabaseChanges");
    request["recordType"] = recordType;
    request["fields"] = JoinKeys(desiredKeys);
    request["pageSize"] = resultLimit;
    request["cursor"] = cursor;
    AddTraceId(context, request);
    return request;
}

void NBDatabase::InnerFetchDatabaseChanges(
    std::shared_ptr<NBContext> context, Json::Value request, RecordList records, NBChangesCallback callback)
{
    std::string cursor;
    bool hasMore = false;
    const NBError error = Exchange(request, RECORD_REQUEST_TIMEOUT, [&](const Json::Value &reply, NBError &result) {
        const Json::Value *changes = FindArray(reply, "changes");
        if (changes == nullptr) {
            result.SetLocalError(NB_LOCAL_BAD_DATA);
            return;
        }
        ReadRecords(*changes, *records);
        cursor = JsonHelper::GetStringFromJson(reply, "nextCursor");
        hasMore = !cursor.empty();
        if (!hasMore) {
            cursor = JsonHelper::GetStringFromJson(reply, "newStartCursor");
        }
    });
    if (callback != nullptr) {
        callback(std::move(context), shared_from_this(), std::move(records), std::move(cursor), hasMore, error);
    }
}

void NBDatabase::ReadRecords(const Json::Value &replyRecords, std::vector<NBRecord> &records)
{
    records.reserve(replyRecords.size());
    std::shared_lock<std::shared_mutex> lock(schemaMutex_);
    for (const auto &replyRecord : replyRecords) {
        records.emplace_back().ParseFromJsonValue(schema_, replyRecord);
    }
}

int NBDatabase::FetchRecordWithId(std::shared_ptr<NBContext> context, std::string recordType, std::string recordId,
    const std::vector<std::string> &desiredKeys, NBFetchCallback callback)
{
    Json::Value request = MakeFetchRequest(context, recordType, recordId, desiredKeys);
    StartWorker(
        &NBDatabase::InnerFetchRecordWithId, std::move(context), std::move(request), NBRecord(), std::move(callback));
    return NB_LOCAL_SUCCESS;
}

int NBDatabase::FetchRecordWithId(std::shared_ptr<NBContext> context, const NBRecord &record,
    const std::vector<std::string> &desiredKeys, NBFetchCallback callback)
{
    Json::Value request = MakeFetchRequest(context, record.GetRecordType(), record.GetRecordId(), desiredKeys);
    request["ownerId"] = record.GetOwnerId();
    StartWorker(
        &NBDatabase::InnerFetchRecordWithId, std::move(context), std::move(request), NBRecord(), std::move(callback));
    return NB_LOCAL_SUCCESS;
}

Json::Value NBDatabase::MakeFetchRequest(const std::shared_ptr<NBContext> &context, const std::string &recordType,
    const std::string &recordId, const std::vector<std::string> &desiredKeys) const
{
    Json::Value request = MakeRecordRequest("fetchRecordWithId");
    request["recordType"] = recordType;
    request["recordId"] = recordId;
    request["fields"] = JoinKeys(desiredKeys);
    AddTraceId(context, request);
    return request;
}

void NBDatabase::InnerFetchRecordWithId(
    std::shared_ptr<NBContext> context, Json::Value request, NBRecord record, NBFetchCallback callback)
{
    const NBError error = FetchRecord(request, record);
    if (callback != nullptr) {
        callback(std::move(context), shared_from_this(), record.GetRecordId(), record, error);
    }
}

// Sends a request for the record that it names and reads the answer, which is the record. Whatever that is, the record
// has an id afterwards, and nothing else with an error.
NBError NBDatabase::FetchRecord(Json::Value &request, NBRecord &record)
{
    const std::string requestedId = JsonHelper::GetStringFromJson(request, "recordId");
    record.SetRecordId(requestedId);
    NBError error = Exchange(request, RECORD_REQUEST_TIMEOUT,
        [&](const Json::Value &reply, NBError &result) { ReadRecordReply(reply, record, result); });
    if (error.HasError()) {
        record = NBRecord();
    }
    if (record.GetRecordId().empty()) {
        record.SetRecordId(requestedId);
    }
    return error;
}

void NBDatabase::ReadRecordReply(const Json::Value &reply, NBRecord &record, NBError &error)
{
    const int code = JsonHelper::GetIntFromJson(reply, "code");
    if (code == 0) {
        std::shared_lock<std::shared_mutex> lock(schemaMutex_);
        if (!record.ParseFromJsonValue(schema_, reply)) {
            error.SetLocalError(NB_LOCAL_BAD_DATA);
        }
        return;
    }
    const Json::Value *serverError = JsonHelper::FindMember(reply, "error");
    if (serverError == nullptr) {
        error.SetLocalError(NB_LOCAL_UNEXPECTED_REPLY);
    } else {
        error.ParseErrorFromJson(*serverError, code);
    }
}

int NBDatabase::FetchRecordWithIds(std::shared_ptr<NBContext> context, std::vector<NBRecord> &&records,
    const std::vector<std::string> &desiredKeys, NBRecordsCallback callback)
{
    Json::Value request = MakeRecordRequest("fetchRecordWithIds");
    request["fields"] = JoinKeys(desiredKeys);
    AddTraceId(context, request);
    StartWorker(&NBDatabase::InnerFetchRecordWithIds, std::move(context), std::move(request),
        std::make_shared<NBResultMap>(), GroupByType(std::move(records)), std::move(callback));
    return NB_LOCAL_SUCCESS;
}

NBDatabase::RecordsByType NBDatabase::GroupByType(std::vector<NBRecord> &&records)
{
    RecordsByType groups;
    for (auto &record : records) {
        groups[record.GetRecordType()].push_back(std::move(record));
    }
    return groups;
}

void NBDatabase::InnerFetchRecordWithIds(std::shared_ptr<NBContext> context, Json::Value request,
    std::shared_ptr<NBResultMap> results, RecordsByType groups, NBRecordsCallback callback)
{
    const auto fillRequest = [](Json::Value &groupRequest, const std::vector<NBRecord> &records) {
        Json::Value recordArray(Json::arrayValue);
        for (const auto &record : records) {
            Json::Value &item = recordArray.append(Json::Value(Json::objectValue));
            item["recordId"] = record.GetRecordId();
            item["ownerId"] = record.GetOwnerId();
        }
        groupRequest["records"] = std::move(recordArray);
    };
    const NBError error = SendGroups(request, groups, results, fillRequest);
    if (callback != nullptr) {
        callback(std::move(context), shared_from_this(), std::move(results), error);
    }
}

NBError NBDatabase::GetStartCursor(std::shared_ptr<NBContext> context, std::string recordType, std::string &cursor)
{
    Json::Value request = MakeRequest("getStartCursor");
    request["recordType"] = recordType;
    request["databaseType"] = static_cast<int>(scope_);
    AddTraceId(context, request);
    return Exchange(request, RECORD_REQUEST_TIMEOUT, [&cursor](const Json::Value &reply, NBError &) {
        cursor = JsonHelper::GetStringFromJson(reply, "startCursor");
    });
}

NBError NBDatabase::GetStartCursor(std::string recordType, std::string &cursor)
{
    return GetStartCursor(nullptr, std::move(recordType), cursor);
}
} // namespace Nubis
