// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "account/container_lock.h"

#include "util/encoding.h"
#include "util/failure.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

constexpr size_t SESSION_ID_BYTES = 16;
constexpr int64_t MS_PER_SECOND = 1000;
constexpr int64_t LOCK_MS = LOCK_SECONDS * MS_PER_SECOND;

} // namespace

ContainerLock::ContainerLock(WriteSession &session, const DatabaseKey &key, int64_t nowMs)
    : session_(session), setting_("lock/" + key.bundleName + "/" + key.containerName),
      containerName_(key.containerName), nowMs_(nowMs)
{
    Json::Value kept;
    std::string error;
    // One that was damaged by hand counts as none.
    if (ParseJson(session_.View().Setting(setting_).value_or(""), kept, error) && kept.isObject() &&
        kept["expiresMs"].isInt64()) {
        holder_ = TextMember(kept, "sessionId");
        expiresMs_ = kept["expiresMs"].asInt64();
    }
}

bool ContainerLock::IsHeld() const
{
    // One that ends later than a lock can was given before the clock was set back: it would last far too long.
    return !holder_.empty() && nowMs_ < expiresMs_ && expiresMs_ <= nowMs_ + LOCK_MS;
}

void ContainerLock::RequireFree(const std::string &sessionId) const
{
    if (!IsHeld() || sessionId == holder_) {
        return;
    }
    int64_t seconds = (expiresMs_ - nowMs_ + MS_PER_SECOND - 1) / MS_PER_SECOND;
    throw RequestError(ErrorCode::LOCK_HELD,
        "container \"" + containerName_ + "\" is locked by another session, for " + std::to_string(seconds) +
            " s more unless it renews or releases the lock",
        "lockSessionId");
}

std::string ContainerLock::Take(const std::string &sessionId)
{
    RequireFree(sessionId);
    if (!IsHeld()) {
        holder_ = HexEncode(RandomBytes(SESSION_ID_BYTES));
    }
    expiresMs_ = nowMs_ + LOCK_MS;
    Keep();
    return holder_;
}

void ContainerLock::Release(const std::string &sessionId)
{
    RequireFree(sessionId);
    if (sessionId == holder_) {
        holder_.clear();
        Keep();
    }
}

void ContainerLock::Keep()
{
    Json::Value kept(Json::objectValue);
    kept["sessionId"] = holder_;
    kept["expiresMs"] = Json::Int64(expiresMs_);
    session_.SetSetting(setting_, WriteJson(kept));
}

} // namespace DriveService
