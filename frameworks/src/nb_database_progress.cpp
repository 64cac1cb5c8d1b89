// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_database.h"

#include <utility>

#include <json/value.h>

#include "ffrt_inner.h"
#include "json_helper.h"
#include "log.h"
#include "urgent_scope.h"
#include "uuid_helper.h"

// The registry of progress callbacks and its timer.
namespace Nubis {
namespace {
constexpr uint64_t PROGRESS_PERIOD_MS = 10000;
constexpr ffrt_timer_t NO_TIMER = -1;

struct callbackNode {
    // Deliveries are on while above 0.
    int enableCount = 0;
    std::function<void()> call;
};

// Never destroyed: the timer may tick while the process ends.
struct ProgressRegistry {
    ffrt::mutex mutex;
    std::map<std::string, std::shared_ptr<NBProgressMap>> progress;
    std::map<std::string, callbackNode> nodes;
    ffrt_timer_t timer = NO_TIMER;
};

ProgressRegistry &GetRegistry()
{
    static auto *registry = new ProgressRegistry;
    return *registry;
}

// The three below with the registry's mutex held.
void StartTimer(ProgressRegistry &registry)
{
    if (registry.timer != NO_TIMER) {
        return;
    }
    NB_LOGI("start process timer");
    registry.timer =
        ffrt_timer_start(ffrt_qos_default, PROGRESS_PERIOD_MS, nullptr, NBDatabase::TimerProgressFunc, true);
    if (registry.timer == NO_TIMER) {
        NB_LOGE("start progress timer failed");
    }
}

// Stopping waits for a tick that is running, which wants the mutex: so the caller stops it after unlocking.
ffrt_timer_t TakeTimer(ProgressRegistry &registry)
{
    return std::exchange(registry.timer, NO_TIMER);
}

ffrt_timer_t TakeUnusedTimer(ProgressRegistry &registry)
{
    return registry.nodes.empty() ? TakeTimer(registry) : NO_TIMER;
}

void StopTimer(ffrt_timer_t timer)
{
    if (timer != NO_TIMER) {
        ffrt_timer_stop(ffrt_qos_default, timer);
    }
}
} // namespace

std::string NBDatabase::GetTaskIdBySendData(const Json::Value &request)
{
    const std::string taskId =
        JsonHelper::GetStringFromJson(request, "prepareTraceId") + JsonHelper::GetStringFromJson(request, "traceId");
    return taskId.empty() ? UuidHelper::GenerateUuidWithoutDelim() : taskId;
}

void NBDatabase::AddProgressCallBack(const std::string &taskId, NBProgressCallback callback,
    std::shared_ptr<NBContext> context, std::shared_ptr<NBProgressMap> progress)
{
    std::function<void()> call = [callback = std::move(callback), context = std::move(context), progress]() {
        if (callback != nullptr) {
            callback(context, progress);
        }
    };
    auto &registry = GetRegistry();
    std::lock_guard<ffrt::mutex> lock(registry.mutex);
    registry.progress[taskId] = std::move(progress);
    // What is replaced goes with the local variable, after unlocking: it may hold objects of the caller.
    registry.nodes[taskId].call.swap(call);
    StartTimer(registry);
}

void NBDatabase::RemoveProgressCallBack(const std::string &taskId)
{
    auto &registry = GetRegistry();
    ffrt_timer_t unused = NO_TIMER;
    // Ends after unlocking: the callback may hold objects of the caller, whose end may come back here.
    std::map<std::string, callbackNode>::node_type removed;
    {
        std::lock_guard<ffrt::mutex> lock(registry.mutex);
        registry.progress.erase(taskId);
        removed = registry.nodes.extract(taskId);
        unused = TakeUnusedTimer(registry);
    }
    StopTimer(unused);
}

void NBDatabase::EnableProgressCallBack(const std::string &taskId)
{
    auto &registry = GetRegistry();
    std::lock_guard<ffrt::mutex> lock(registry.mutex);
    const auto node = registry.nodes.find(taskId);
    if (node == registry.nodes.end()) {
        NB_LOGE("enable progress callback failed, no callback taskid:%{public}s", taskId.c_str());
        return;
    }
    ++node->second.enableCount;
    NB_LOGD("enable progress callback, taskid:%{public}s", taskId.c_str());
}

void NBDatabase::DisableProgressCallBack(const std::string &taskId)
{
    auto &registry = GetRegistry();
    std::lock_guard<ffrt::mutex> lock(registry.mutex);
    const auto node = registry.nodes.find(taskId);
    if (node == registry.nodes.end()) {
        NB_LOGE("disable progress callback failed, no callback taskid:%{public}s", taskId.c_str());
        return;
    }
    if (node->second.enableCount > 0) {
        --node->second.enableCount;
    }
    NB_LOGD("disable progress callback, taskid:%{public}s, count:%{public}d", taskId.c_str(), node->second.enableCount);
}

void NBDatabase::StartProgressTimer()
{
    auto &registry = GetRegistry();
    std::lock_guard<ffrt::mutex> lock(registry.mutex);
    StartTimer(registry);
}

void NBDatabase::StopProgressTimer()
{
    auto &registry = GetRegistry();
    ffrt_timer_t timer = NO_TIMER;
    {
        std::lock_guard<ffrt::mutex> lock(registry.mutex);
        timer = TakeTimer(registry);
    }
    StopTimer(timer);
}

void NBDatabase::TimerProgressFunc(void *)
{
    auto &registry = GetRegistry();
    std::lock_guard<ffrt::mutex> lock(registry.mutex);
    const ffrt_timer_t unused = TakeUnusedTimer(registry);
    if (unused != NO_TIMER) {
        // A timer cannot be stopped from inside its own tick.
        ffrt::submit([unused]() { StopTimer(unused); });
        return;
    }
    // Uploads for the service wait for the mutex, and those who hold the slots for the uploads.
    const UrgentScope urgent;
    for (const auto &[taskId, node] : registry.nodes) {
        if (node.enableCount > 0) {
            node.call();
        }
    }
}
} // namespace Nubis
