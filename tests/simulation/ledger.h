// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SIMULATION_LEDGER_H
#define NUBIS_SIMULATION_LEDGER_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>

namespace Simulation {

// How often every operation that was accepted called back or returned, and what else cannot be. Any thread.
class Ledger {
public:
    // Returns the number of the operation.
    size_t Open(const std::string &text);
    void Close(size_t operation);
    // It was not accepted: it must not call back.
    void Refuse(size_t operation);
    void Report(const std::string &problem);

    // Waits, in real time, until everything that was opened is closed; false when that takes longer.
    bool AwaitClosed(std::chrono::milliseconds atMost);
    // What is open, one in a line.
    std::string OpenOperations();
    // All that is wrong, one in a line; empty when nothing is.
    std::string Problems();

private:
    struct Operation {
        std::string text;
        bool isRefused = false;
        int closings = 0;
    };

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Operation> operations_;
    size_t open_ = 0;
    std::string problems_;
};

} // namespace Simulation

#endif // NUBIS_SIMULATION_LEDGER_H
