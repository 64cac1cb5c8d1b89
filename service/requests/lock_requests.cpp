// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include <optional>

#include "account/container_lock.h"

namespace DriveService {

Json::Value GetLock(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    std::string wanted = request.TextOr("lockSessionId", "");
    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    std::string sessionId = ContainerLock(*session, target.key, context.nowMs()).Take(wanted, request.DeviceName());
    session->Commit();
    Json::Value reply = Success();
    reply["lockSessionId"] = sessionId;
    reply["lockInterval"] = Json::Int64(LOCK_SECONDS);
    return reply;
}

Json::Value DeleteLock(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    std::string sessionId = request.NonEmptyText("lockSessionId");
    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    ContainerLock(*session, target.key, context.nowMs()).Release(sessionId);
    session->Commit();
    return Success();
}

Json::Value GetLockState(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    std::unique_ptr<ReadSession> session = context.store.BeginRead();
    std::optional<LockHolder> holder = FindLockHolder(*session, target.key, context.nowMs());
    Json::Value reply = Success();
    // Never the session's id: whoever knows it may write.
    Json::Value &lock = reply["lock"] = Json::Value(Json::objectValue);
    lock["locked"] = holder.has_value();
    if (holder) {
        lock["deviceName"] = holder->deviceName;
        lock["since"] = Json::Int64(holder->sinceMs);
        lock["until"] = Json::Int64(holder->expiresMs);
    }
    return reply;
}

} // namespace DriveService
