// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_START_TASK_H
#define NUBIS_START_TASK_H

#include <functional>
#include <utility>

#include "ffrt_inner.h"
#include "urgent_scope.h"

namespace Nubis {
// Runs function(arguments...) on a task of its own, which nobody waits for; both are copied or moved in. Started inside
// an UrgentScope it runs inside one: whoever works on behalf of a request of the service may wait for it.
template <typename Function, typename... Arguments>
void StartTask(Function &&function, Arguments &&...arguments)
{
    if (!UrgentScope::IsInside()) {
        ffrt::thread(std::forward<Function>(function), std::forward<Arguments>(arguments)...).detach();
        return;
    }
    const auto runInside = [](auto &&run, auto &&...passed) {
        const UrgentScope urgent;
        std::invoke(std::forward<decltype(run)>(run), std::forward<decltype(passed)>(passed)...);
    };
    ffrt::thread(runInside, std::forward<Function>(function), std::forward<Arguments>(arguments)...).detach();
}
} // namespace Nubis

#endif // NUBIS_START_TASK_H
