// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "urgent_scope.h"

#include <cstdint>
#include <map>
#include <mutex>

#include "ffrt_inner.h"

namespace Nubis {
namespace {
// A task may go on in another thread after a wait, so its scopes are counted by its id. Never destroyed: tasks may run
// while the process ends.
struct TaskScopes {
    std::mutex mutex;
    std::map<uint64_t, uint32_t> counts;
};

TaskScopes &GetTaskScopes()
{
    static auto *scopes = new TaskScopes;
    return *scopes;
}

// Of a thread that runs no task.
thread_local uint32_t g_threadScopes = 0;
} // namespace

UrgentScope::UrgentScope()
{
    const uint64_t task = ffrt::this_task::get_id();
    if (task == 0) {
        ++g_threadScopes;
        return;
    }
    auto &scopes = GetTaskScopes();
    std::lock_guard<std::mutex> lock(scopes.mutex);
    ++scopes.counts[task];
}

UrgentScope::~UrgentScope()
{
    const uint64_t task = ffrt::this_task::get_id();
    if (task == 0) {
        --g_threadScopes;
        return;
    }
    auto &scopes = GetTaskScopes();
    std::lock_guard<std::mutex> lock(scopes.mutex);
    const auto found = scopes.counts.find(task);
    if (found != scopes.counts.end() && --found->second == 0) {
        scopes.counts.erase(found);
    }
}

bool UrgentScope::IsInside()
{
    const uint64_t task = ffrt::this_task::get_id();
    if (task == 0) {
        return g_threadScopes > 0;
    }
    auto &scopes = GetTaskScopes();
    std::lock_guard<std::mutex> lock(scopes.mutex);
    return scopes.counts.count(task) > 0;
}
} // namespace Nubis
