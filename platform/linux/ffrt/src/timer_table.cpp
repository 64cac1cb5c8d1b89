// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "timer_table.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "c/timer.h"

#include "core.h"
#include "saturate.h"
#include "task.h"

namespace Host::Ffrt {
ffrt_timer_t TimerTable::Start(ffrt_qos_t qos, uint64_t timeoutMs, void *data, ffrt_timer_cb callback, bool repeat)
{
    const bool knownQos = qos >= ffrt_qos_background && qos <= ffrt_qos_user_interactive;
    CoreLock lock(GetCore().mutex);
    if (callback == nullptr || !knownQos || nextHandle_ == std::numeric_limits<ffrt_timer_t>::max()) {
        return -1;
    }
    auto timer = std::make_unique<Timer>();
    timer->handle = nextHandle_++;
    timer->qos = qos;
    // A repeating timer without a period would fill its moment for ever.
    timer->periodNs = Saturate(repeat ? std::max<uint64_t>(timeoutMs, 1) : timeoutMs, NANOSECONDS_PER_MILLISECOND);
    timer->data = data;
    timer->callback = callback;
    timer->repeat = repeat;
    Timer &started = *timer;
    const ffrt_timer_t handle = started.handle;
    timers_.emplace(handle, std::move(timer));
    Arm(started);
    return handle;
}

int TimerTable::Stop(ffrt_qos_t qos, ffrt_timer_t handle)
{
    Core &core = GetCore();
    CoreLock lock(core.mutex);
    if (handle < 0 || handle >= nextHandle_) {
        return -1;
    }
    auto found = timers_.find(handle);
    if (found == timers_.end()) {
        return 0;
    }
    Timer &timer = *found->second;
    if (timer.qos != qos) {
        return -1;
    }
    if (timer.state == State::ARMED || timer.state == State::DUE) {
        auto &due = lines_[timer.qos].due;
        due.erase(std::remove(due.begin(), due.end(), &timer), due.end());
        core.timeLine.Remove(timer);
        timers_.erase(found);
        return 0;
    }
    timer.state = State::STOPPING;
    const void *key = &timer;
    while (timers_.count(handle) != 0) {
        core.parking.Park(lock, key);
    }
    return 0;
}

void TimerTable::Timer::OnDue()
{
    GetCore().timers.Queue(*this);
}

void TimerTable::Arm(Timer &timer)
{
    TimeLine &timeLine = GetCore().timeLine;
    timer.state = State::ARMED;
    timeLine.Add(timer, timeLine.After(timer.periodNs));
}

void TimerTable::Queue(Timer &timer)
{
    Line &line = lines_[timer.qos];
    timer.state = State::DUE;
    line.due.push_back(&timer);
    if (line.worked) {
        return;
    }
    line.worked = true;
    TaskAttributes attributes;
    attributes.name = "ffrt_timer";
    attributes.qos = timer.qos;
    auto *task = new Task([this, qos = timer.qos]() { Work(qos); }, attributes);
    task->Launch(nullptr);
}

void TimerTable::Work(ffrt_qos_t qos)
{
    Core &core = GetCore();
    CoreLock lock(core.mutex);
    Line &line = lines_[qos];
    while (!line.due.empty()) {
        Timer &timer = *line.due.front();
        line.due.pop_front();
        timer.state = State::RUNNING;
        lock.unlock();
        timer.callback(timer.data);
        lock.lock();
        if (timer.repeat && timer.state == State::RUNNING) {
            Arm(timer);
            continue;
        }
        const void *key = &timer;
        timers_.erase(timer.handle);
        core.parking.Unpark(key, ParkingLot::everybody);
    }
    line.worked = false;
}
} // namespace Host::Ffrt

ffrt_timer_t ffrt_timer_start(ffrt_qos_t qos, uint64_t timeout, void *data, ffrt_timer_cb cb, bool repeat)
{
    return Host::Ffrt::GetCore().timers.Start(qos, timeout, data, cb, repeat);
}

int ffrt_timer_stop(ffrt_qos_t qos, ffrt_timer_t handle)
{
    return Host::Ffrt::GetCore().timers.Stop(qos, handle);
}
