// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_LOCK_SESSION_H
#define NUBIS_TOOL_LOCK_SESSION_H

#include <string>

#include "nb_container.h"
#include "nb_database.h"

namespace NubisTool {

// The service's name of the failure when another session holds the lock.
constexpr const char *LOCK_HELD_REASON = "LOCK_HELD";

// How commands that are run while a lock is held get to write: by a variable that holds the lock's session, as ID for
// whatever container they work on, or as SCOPE=ID for one; several are separated by spaces.
constexpr const char *LOCK_SESSION_VARIABLE = "NUBIS_LOCK_SESSION";

// A container as the variable names it: "100/com.example.notes/notes".
std::string LockScope(int user, const Nubis::NBContainer &container);

// The session that a value of the variable, which may be null, holds for the scope; the first one counts, empty: none.
std::string LockSessionFor(const char *value, const std::string &scope);

// The value with one more session, which counts more than those that are there.
std::string AddLockSession(const char *value, const std::string &scope, const std::string &sessionId);

enum class Renewal {
    HELD,
    LOST,   // the session no longer holds the lock, so others may have written
    UNKNOWN // nothing came of the request, see its error
};

// Renews the lock of a session; the database has the session afterwards if it is held.
Renewal RenewLock(Nubis::NBDatabase &database, const std::string &sessionId, Nubis::NBError &error);

// Gives the session to the database, so that it may write; throws CommandError when it does not hold the lock.
void TakeOnLockSession(Nubis::NBDatabase &database, const std::string &sessionId);

} // namespace NubisTool

#endif
