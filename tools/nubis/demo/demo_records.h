// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_RECORDS_H
#define NUBIS_TOOL_DEMO_RECORDS_H

#include <mutex>
#include <utility>

#include "local_store.h"

namespace NubisTool {

// What a device of the demo holds. Notifications change it on a thread of their own, so everybody uses it under its lock.
class DemoRecords {
public:
    template <typename Action>
    auto With(Action &&action)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return std::forward<Action>(action)(store_);
    }

private:
    std::mutex mutex_;
    LocalStore store_;
};

} // namespace NubisTool

#endif
