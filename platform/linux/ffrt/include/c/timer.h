// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_C_TIMER_H
#define FFRT_C_TIMER_H

#include "c/type_def.h"

extern "C" {
// Calls cb(data) after `timeout` milliseconds, once or again and again. The callback runs as a task of `qos`; the
// callbacks of all timers of one QoS run one after another. A repeating timer is armed again after its callback has
// returned, so its period counts from the end of the callback; a repeating period of 0 is taken as 1.
// Returns the handle, counted up from 0 in this process, or -1 for a null callback or a QoS outside
// ffrt_qos_background..ffrt_qos_user_interactive. May be called from any thread, and inside a callback.
ffrt_timer_t ffrt_timer_start(ffrt_qos_t qos, uint64_t timeout, void *data, ffrt_timer_cb cb, bool repeat);

// Stops a timer. Returns only when no callback of this timer runs any more, so that `data` may be freed afterwards;
// called inside the timer's own callback, or under a lock that the callback needs, it therefore never returns.
// Returns 0 also for a timer that has ended; -1 for a handle that was never given out, and for a running timer of
// another QoS, which goes on.
int ffrt_timer_stop(ffrt_qos_t qos, ffrt_timer_t handle);
}

#endif
