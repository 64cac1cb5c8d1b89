// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_NB_DATABASE_WORKER_H
#define NUBIS_NB_DATABASE_WORKER_H

#include <utility>

#include <json/value.h>

#include "exchange.h"
#include "json_helper.h"
#include "nb_database.h"
#include "start_task.h"

// What the operations of NBDatabase do alike.
namespace Nubis {
// Time-outs of requests, in seconds.
constexpr int RECORD_REQUEST_TIMEOUT = 60;
constexpr int DEFAULT_REQUEST_TIMEOUT = -1;

// The member when it is an array, else null.
inline const Json::Value *FindArray(const Json::Value &json, const char *key)
{
    const Json::Value *member = JsonHelper::FindMember(json, key);
    return member != nullptr && member->isArray() ? member : nullptr;
}

// Appends what is sent of the record and returns it; null when one of its fields cannot be written.
Json::Value *AppendRecordJson(const NBRecord &record, Json::Value &recordArray);
// A deletion does not need the fields, so one that cannot be written does not keep the record from being deleted.
Json::Value MakeDeleteJson(const NBRecord &record);

// Runs the member on a task of its own, which holds the database until it ends.
template <typename... Parameters, typename... Arguments>
void NBDatabase::StartWorker(void (NBDatabase::*inner)(Parameters...), Arguments &&...arguments)
{
    StartTask(inner, shared_from_this(), std::forward<Arguments>(arguments)...);
}

template <typename ReadReply>
NBError NBDatabase::Exchange(Json::Value &request, int timeout, ReadReply &&readReply)
{
    // As in SendDataToCloudSrv, for the failures of single records.
    const auto container = container_.lock();
    return Nubis::Exchange([&](Json::Value &reply) { return SendDataToCloudSrv(request, reply, timeout); },
        std::forward<ReadReply>(readReply));
}

// Sends one request for each record type, types in ascending order, and gathers the results of all.
// fillRequest(request, records) puts the records of a group into the request. The error is that of the last group;
// records of a group that failed have its error in their results.
template <typename FillRequest>
NBError NBDatabase::SendGroups(
    Json::Value &request, RecordsByType &groups, const std::shared_ptr<NBResultMap> &results, FillRequest &&fillRequest)
{
    NBError error;
    for (auto &[recordType, records] : groups) {
        request["recordType"] = recordType;
        fillRequest(request, records);
        error = Exchange(request, DEFAULT_REQUEST_TIMEOUT, [&](const Json::Value &reply, NBError &) {
            const Json::Value *replyRecords = FindArray(reply, "records");
            for (Json::ArrayIndex i = 0; replyRecords != nullptr && i < replyRecords->size(); ++i) {
                InsertRecordOperResult(request, reply, (*replyRecords)[i], results);
            }
        });
        if (!error.HasError()) {
            continue;
        }
        for (auto &record : records) {
            std::string recordId = record.GetRecordId();
            results->insert_or_assign(std::move(recordId), NBRecordOperResult(error, std::move(record)));
        }
    }
    return error;
}
} // namespace Nubis

#endif // NUBIS_NB_DATABASE_WORKER_H
