// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_ACCOUNT_CONTAINER_LOCK_H
#define NUBIS_SERVICE_ACCOUNT_CONTAINER_LOCK_H

#include <cstdint>
#include <optional>
#include <string>

#include "store/store.h"

namespace DriveService {

// How long a lock lasts from when it was taken or renewed.
constexpr int64_t LOCK_SECONDS = 60;

// Times are milliseconds since the epoch.
struct LockHolder {
    std::string sessionId;
    std::string deviceName; // of the one who took it; empty for a lock of a service that did not keep it
    int64_t sinceMs = 0;    // 0 likewise
    int64_t expiresMs = 0;
};

// Nothing when nobody holds the container's lock.
std::optional<LockHolder> FindLockHolder(ReadSession &session, const DatabaseKey &key, int64_t nowMs);

// The lock on a container, kept in the store. It covers all of the container's databases, because requests for it name
// none. A session's id is its key: who knows it may write. Lives no longer than the session that it works in.
class ContainerLock {
public:
    ContainerLock(WriteSession &session, const DatabaseKey &key, int64_t nowMs);

    // Gives the lock to the session that holds it already, anew, or else to a new one, and returns the session's id. A
    // session whose lock has run out sees by the new id that others may have written since. Throws RequestError
    // (LOCK_HELD) when another session holds it.
    std::string Take(const std::string &sessionId, const std::string &deviceName);

    // The lock is free afterwards, also when it was before. Throws as above.
    void Release(const std::string &sessionId);

    // Throws as above.
    void RequireFree(const std::string &sessionId) const;

private:
    WriteSession &session_;
    const DatabaseKey key_;
    const int64_t nowMs_;
    std::optional<LockHolder> holder_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_ACCOUNT_CONTAINER_LOCK_H
