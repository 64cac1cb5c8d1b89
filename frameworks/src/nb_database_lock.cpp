// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_database.h"

#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"
#include "nb_database_worker.h"

// The database's lock, and marking records as shared.
namespace Nubis {
NBError NBDatabase::GetLock(std::shared_ptr<NBContext> context, NBLock &lock)
{
    Json::Value request = MakeRequest("getLock");
    if (!lock.lockSessionId.empty()) {
        request["lockSessionId"] = lock.lockSessionId;
    }
    AddTraceId(context, request);
    return Exchange(request, RECORD_REQUEST_TIMEOUT, [this, &lock](const Json::Value &reply, NBError &) {
        lock.lockSessionId = JsonHelper::GetStringFromJson(reply, "lockSessionId");
        lock.lockInterval = JsonHelper::GetIntFromJson(reply, "lockInterval");
        SetLockSessionId(lock.lockSessionId);
    });
}

NBError NBDatabase::GetLock(NBLock &lock)
{
    return GetLock(nullptr, lock);
}

NBError NBDatabase::DeleteLock(std::shared_ptr<NBContext> context, NBLock lock)
{
    Json::Value request = MakeRequest("deleteLock");
    request["lockSessionId"] = lock.lockSessionId;
    AddTraceId(context, request);
    NBError error = Exchange(request, RECORD_REQUEST_TIMEOUT, [](const Json::Value &, NBError &) {});
    if (error.HasError()) {
        SetLockSessionId("");
        NB_LOGE("delete lock failed, send data to cloud srv failed");
        return error;
    }
    const std::string localSessionId = GetLockSessionId();
    if (lock.lockSessionId == localSessionId) {
        SetLockSessionId("");
    } else {
        NB_LOGE("delete lock session id is not equal, lock sessionId:%{public}s, local sessionId:%{public}s",
            lock.lockSessionId.c_str(), localSessionId.c_str());
    }
    return error;
}

NBError NBDatabase::DeleteLock(NBLock lock)
{
    return DeleteLock(nullptr, std::move(lock));
}

void NBDatabase::SetLockSessionId(const std::string &lockSessionId)
{
    std::lock_guard<std::mutex> guard(lockSessionMutex_);
    lockSessionId_ = lockSessionId;
}

int NBDatabase::SetPreShared(
    std::shared_ptr<NBContext> context, std::string recordType, std::string recordId, NBPreSharedCallback callback)
{
    Json::Value request = MakeRequest("setPreShared");
    request["recordType"] = recordType;
    request["recordId"] = recordId;
    AddTraceId(context, request);
    StartWorker(
        &NBDatabase::InnerSetPreShared, std::move(context), std::move(request), NBRecord(), std::move(callback));
    return NB_LOCAL_SUCCESS;
}

void NBDatabase::InnerSetPreShared(
    std::shared_ptr<NBContext> context, Json::Value request, NBRecord record, NBPreSharedCallback callback)
{
    const NBError error = FetchRecord(request, record);
    if (callback != nullptr) {
        callback(std::move(context), shared_from_this(), record, error);
    }
}
} // namespace Nubis
