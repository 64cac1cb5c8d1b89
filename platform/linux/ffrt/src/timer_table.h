// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_FFRT_TIMER_TABLE_H
#define HOST_FFRT_TIMER_TABLE_H

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <unordered_map>

#include "c/type_def.h"

#include "time_line.h"

namespace Host::Ffrt {
// The timers of the process. Each QoS has a line of those that are due, which one task at a time works off. All members
// are called without the core lock.
class TimerTable {
public:
    // See ffrt_timer_start and ffrt_timer_stop.
    ffrt_timer_t Start(ffrt_qos_t qos, uint64_t timeoutMs, void *data, ffrt_timer_cb callback, bool repeat);
    int Stop(ffrt_qos_t qos, ffrt_timer_t handle);

private:
    enum class State {
        ARMED,
        DUE,
        RUNNING,
        STOPPING, // runs for the last time, though it repeats
    };

    struct Timer : public TimedEntry {
        void OnDue() override;

        ffrt_timer_t handle;
        ffrt_qos_t qos;
        int64_t periodNs;
        void *data;
        ffrt_timer_cb callback;
        bool repeat;
        State state = State::ARMED;
    };

    static constexpr std::size_t qosCount = ffrt_qos_user_interactive + 1;
    struct Line {
        std::deque<Timer *> due;
        bool worked = false;
    };

    void Arm(Timer &timer);
    void Queue(Timer &timer);
    void Work(ffrt_qos_t qos);

    std::unordered_map<ffrt_timer_t, std::unique_ptr<Timer>> timers_;
    std::array<Line, qosCount> lines_;
    ffrt_timer_t nextHandle_ = 0;
};
} // namespace Host::Ffrt

#endif
