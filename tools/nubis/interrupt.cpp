// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "interrupt.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace NubisTool {
namespace {

constexpr std::array<int, 3> SIGNALS = {SIGINT, SIGTERM, SIGHUP};

std::atomic<bool> g_interrupted{false};
std::atomic<int> g_lastSignal{0};
std::atomic<int> g_descriptor{-1};
std::array<struct sigaction, SIGNALS.size()> g_previous{};

extern "C" void RememberSignal(int signal)
{
    int savedErrno = errno;
    g_lastSignal.store(signal);
    g_interrupted.store(true);
    uint64_t one = 1;
    if (write(g_descriptor.load(), &one, sizeof(one)) < 0) {
        // A full counter is readable already, and nothing else may be done in a handler.
    }
    errno = savedErrno;
}

} // namespace

InterruptGuard::InterruptGuard(SecondSignal second)
{
    g_interrupted.store(false);
    g_lastSignal.store(0);
    g_descriptor.store(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    struct sigaction action {};
    action.sa_handler = RememberSignal;
    action.sa_flags = second == SecondSignal::ENDS_PROCESS ? static_cast<int>(SA_RESETHAND) : 0;
    sigemptyset(&action.sa_mask);
    for (size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], &action, &g_previous[i]);
        // Under nohup the end of the terminal is to be outlived.
        if (SIGNALS[i] == SIGHUP && g_previous[i].sa_handler == SIG_IGN) {
            sigaction(SIGNALS[i], &g_previous[i], nullptr);
        }
    }
}

InterruptGuard::~InterruptGuard()
{
    for (size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], &g_previous[i], nullptr);
    }
    g_interrupted.store(false);
    close(g_descriptor.exchange(-1));
}

bool Interrupted()
{
    return g_interrupted.load();
}

bool WaitForInterrupt(std::chrono::milliseconds time)
{
    if (!Interrupted()) {
        struct pollfd entry = {InterruptDescriptor(), POLLIN, 0};
        poll(&entry, 1, static_cast<int>(time.count()));
    }
    return Interrupted();
}

int TakeSignal()
{
    uint64_t count = 0;
    if (read(InterruptDescriptor(), &count, sizeof(count)) < 0) {
        return 0;
    }
    return g_lastSignal.exchange(0);
}

int InterruptDescriptor()
{
    return g_descriptor.load();
}

} // namespace NubisTool
