// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "account/container_lock.h"

#include "account/settings.h"
#include "util/encoding.h"
#include "util/failure.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

constexpr size_t SESSION_ID_BYTES = 16;
constexpr int64_t MS_PER_SECOND = 1000;
constexpr int64_t LOCK_MS = LOCK_SECONDS * MS_PER_SECOND;

std::string SettingName(const DatabaseKey &key)
{
    return SETTINGS_LOCK + key.bundleName + "/" + key.containerName;
}

void Keep(WriteSession &session, const DatabaseKey &key, const LockHolder &holder)
{
    Json::Value kept(Json::objectValue);
    kept["sessionId"] = holder.sessionId;
    kept["deviceName"] = holder.deviceName;
    kept["sinceMs"] = Json::Int64(holder.sinceMs);
    kept["expiresMs"] = Json::Int64(holder.expiresMs);
    session.SetSetting(SettingName(key), WriteJson(kept));
}

} // namespace

std::optional<LockHolder> FindLockHolder(ReadSession &session, const DatabaseKey &key, int64_t nowMs)
{
    std::optional<std::string> text = session.Setting(SettingName(key));
    Json::Value kept;
    std::string error;
    // One that was damaged by hand counts as none.
    if (!text || !ParseJson(*text, kept, error) || !kept.isObject() || !kept["expiresMs"].isInt64()) {
        return std::nullopt;
    }
    LockHolder holder{TextMember(kept, "sessionId"), TextMember(kept, "deviceName"),
        kept["sinceMs"].isInt64() ? kept["sinceMs"].asInt64() : 0, kept["expiresMs"].asInt64()};
    // One that ends much later than a lock can was given before the clock was set back and would last far too long. But
    // a small correction of the clock must not take the lock away from its holder.
    bool isHeld = !holder.sessionId.empty() && nowMs < holder.expiresMs && holder.expiresMs <= nowMs + 2 * LOCK_MS;
    return isHeld ? std::make_optional(holder) : std::nullopt;
}

ContainerLock::ContainerLock(WriteSession &session, const DatabaseKey &key, int64_t nowMs)
    : session_(session), key_(key), nowMs_(nowMs), holder_(FindLockHolder(session.View(), key, nowMs))
{}

void ContainerLock::RequireFree(const std::string &sessionId) const
{
    if (!holder_ || sessionId == holder_->sessionId) {
        return;
    }
    int64_t seconds = (holder_->expiresMs - nowMs_ + MS_PER_SECOND - 1) / MS_PER_SECOND;
    throw RequestError(ErrorCode::LOCK_HELD,
        "container \"" + key_.containerName + "\" is locked by another session, for " + std::to_string(seconds) +
            " s more unless it renews or releases the lock",
        "lockSessionId");
}

std::string ContainerLock::Take(const std::string &sessionId, const std::string &deviceName)
{
    RequireFree(sessionId);
    if (!holder_) {
        holder_ = LockHolder{HexEncode(RandomBytes(SESSION_ID_BYTES)), deviceName, nowMs_, 0};
    }
    holder_->expiresMs = nowMs_ + LOCK_MS;
    Keep(session_, key_, *holder_);
    return holder_->sessionId;
}

void ContainerLock::Release(const std::string &sessionId)
{
    RequireFree(sessionId);
    if (holder_) {
        holder_.reset();
        Keep(session_, key_, {});
    }
}

} // namespace DriveService
