// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "lock_session.h"

#include <sstream>

#include "command_error.h"
#include "error_text.h"

namespace NubisTool {

std::string LockScope(int user, const Nubis::NBContainer &container)
{
    return std::to_string(user) + "/" + container.GetBundleName() + "/" + container.GetContainerName();
}

std::string LockSessionFor(const char *value, const std::string &scope)
{
    std::istringstream entries(value == nullptr ? "" : value);
    for (std::string entry; entries >> entry;) {
        size_t assignment = entry.rfind('=');
        if (assignment == std::string::npos || entry.compare(0, assignment, scope) == 0) {
            return entry.substr(assignment + 1);
        }
    }
    return "";
}

std::string AddLockSession(const char *value, const std::string &scope, const std::string &sessionId)
{
    return scope + "=" + sessionId + (value == nullptr ? "" : std::string(" ") + value);
}

Renewal RenewLock(Nubis::NBDatabase &database, const std::string &sessionId, Nubis::NBError &error)
{
    Nubis::NBLock lock{0, sessionId};
    error = database.GetLock(lock);
    if (ErrorReason(error) == LOCK_HELD_REASON) {
        return Renewal::LOST;
    }
    if (error.HasError()) {
        return Renewal::UNKNOWN;
    }
    if (lock.lockSessionId == sessionId) {
        return Renewal::HELD;
    }
    // The lock was free. What came is a new one, which nobody asked for.
    database.DeleteLock(lock);
    return Renewal::LOST;
}

void TakeOnLockSession(Nubis::NBDatabase &database, const std::string &sessionId)
{
    Nubis::NBError error;
    switch (RenewLock(database, sessionId, error)) {
        case Renewal::HELD:
            return;
        case Renewal::LOST:
            throw CommandError("the session in " + std::string(LOCK_SESSION_VARIABLE) +
                                   " does not hold the lock of the container " + database.GetContainerName(),
                "others may have written meanwhile: begin again with `nubis lock exec`, or unset the variable");
        case Renewal::UNKNOWN:
            ThrowIfError(error, "renewing the lock");
    }
}

} // namespace NubisTool
