// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_database.h"

#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"
#include "nb_database_worker.h"

// Copying records.
namespace Nubis {
NBRecordsCallback CopyRecordsToRecordCallback(NBSingleRecordCallback callback)
{
    return RecordsToRecordCallback(std::move(callback));
}

int NBDatabase::CopyRecord(std::shared_ptr<NBContext> context, NBCopyRecord &&record, NBSingleRecordCallback callback)
{
    std::vector<NBCopyRecord> records;
    records.push_back(std::move(record));
    return CopyRecords(std::move(context), std::move(records), CopyRecordsToRecordCallback(std::move(callback)));
}

int NBDatabase::CopyRecords(
    std::shared_ptr<NBContext> context, std::vector<NBCopyRecord> &&records, NBRecordsCallback callback)
{
    Json::Value request = MakeRecordRequest("copyRecords");
    AddTraceId(context, request);
    Json::Value recordArray(Json::arrayValue);
    for (const auto &order : records) {
        Json::Value *json = AppendRecordJson(order.record, recordArray);
        if (json == nullptr) {
            return NB_LOCAL_BAD_DATA;
        }
        (*json)["srcRecordId"] = order.srcRecordId;
    }
    request["records"] = std::move(recordArray);
    StartWorker(&NBDatabase::InnerCopyRecords, std::move(context), std::move(request), std::make_shared<NBResultMap>(),
        std::move(records), std::move(callback));
    return NB_LOCAL_SUCCESS;
}

void NBDatabase::InnerCopyRecords(std::shared_ptr<NBContext> context, Json::Value request,
    std::shared_ptr<NBResultMap> results, std::vector<NBCopyRecord> orders, NBRecordsCallback callback)
{
    const NBError error = Exchange(request, DEFAULT_REQUEST_TIMEOUT,
        [&](const Json::Value &reply, NBError &result) { ReadCopyReply(request, reply, orders, *results, result); });
    for (size_t i = 0; error.HasError() && i < orders.size(); ++i) {
        std::string key = ResultKey(orders[i].record.GetRecordId(), i);
        results->insert_or_assign(std::move(key), NBRecordOperResult(error, std::move(orders[i].record)));
    }
    if (callback != nullptr) {
        callback(std::move(context), shared_from_this(), std::move(results), error);
    }
}

// The service answers in the order of the orders, which may have no ids; so an answer of another length says nothing
// about any of them.
void NBDatabase::ReadCopyReply(const Json::Value &request, const Json::Value &reply,
    const std::vector<NBCopyRecord> &orders, NBResultMap &results, NBError &error)
{
    const Json::Value *records = FindArray(reply, "records");
    if (records == nullptr) {
        NB_LOGE("reply records error, error reply msg:%{public}s", JsonHelper::JsonToString(reply).c_str());
        error.SetLocalError(NB_LOCAL_UNEXPECTED_REPLY);
        return;
    }
    if (records->size() != orders.size()) {
        NB_LOGE("records size error, src size:%{public}lu, reply size:%{public}u, reply msg:%{public}s", orders.size(),
            records->size(), JsonHelper::JsonToString(reply).c_str());
        error.SetLocalError(NB_LOCAL_UNEXPECTED_REPLY);
        return;
    }
    NBResultMap read;
    for (size_t i = 0; i < orders.size(); ++i) {
        const Json::Value &replyRecord = (*records)[static_cast<Json::ArrayIndex>(i)];
        std::string key = ResultKey(JsonHelper::GetStringFromJson(replyRecord, "recordId"), i);
        NBRecordOperResult result(NBError(NB_LOCAL_UNEXPECTED_REPLY), orders[i].record);
        ParseOperResult(replyRecord, result);
        ReportOmRecordResult(request, reply, replyRecord, result);
        read.insert_or_assign(std::move(key), std::move(result));
    }
    results = std::move(read);
}

std::string NBDatabase::ResultKey(std::string recordId, size_t number)
{
    if (recordId.empty()) {
        recordId = GenerateId("");
    }
    return recordId.empty() ? std::to_string(number) : recordId;
}
} // namespace Nubis
