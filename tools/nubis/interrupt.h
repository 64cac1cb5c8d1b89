// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_INTERRUPT_H
#define NUBIS_TOOL_INTERRUPT_H

#include <chrono>

namespace NubisTool {

enum class SecondSignal {
    ENDS_PROCESS, // for a person who does not want to wait for the clean end
    IS_REMEMBERED // for programs that pass signals on
};

// While one exists, SIGINT, SIGTERM and SIGHUP (unless it was ignored) no longer end the process but are remembered, so
// that the work under way can be brought to a clean end. One at a time; the handlers in place before come back when it
// goes.
class InterruptGuard {
public:
    explicit InterruptGuard(SecondSignal second = SecondSignal::ENDS_PROCESS);
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard &) = delete;
    InterruptGuard &operator=(const InterruptGuard &) = delete;
};

// Whether a signal has come since the guard was made; false without a guard.
bool Interrupted();

// Waits until the time is over or a signal comes; returns Interrupted().
bool WaitForInterrupt(std::chrono::milliseconds time);

// The signal that came since the last call, 0 for none. Unlike Interrupted() it reports each only once.
int TakeSignal();

// Readable once a signal has come, until TakeSignal; for poll. -1 without a guard.
int InterruptDescriptor();

} // namespace NubisTool

#endif
