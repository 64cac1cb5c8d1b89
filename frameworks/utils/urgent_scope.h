// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_URGENT_SCOPE_H
#define NUBIS_URGENT_SCOPE_H

namespace Nubis {
// Requests that the same thread or task sends while one of these exists wait for no slot, because requests that hold
// slots may be waiting for them: the service works on a save until its own request to this process is answered, and a
// request cannot choose its way before the system parameters are here. Whoever sends with a lock held that the serving
// of such a request may wait for is inside as well.
//
// Ends where it was made, in the reverse order. What StartTask starts inside is inside as well.
class UrgentScope {
public:
    UrgentScope();
    ~UrgentScope();
    UrgentScope(const UrgentScope &) = delete;
    UrgentScope &operator=(const UrgentScope &) = delete;

    static bool IsInside();
};
} // namespace Nubis

#endif // NUBIS_URGENT_SCOPE_H
