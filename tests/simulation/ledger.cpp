// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "ledger.h"

namespace Simulation {

size_t Ledger::Open(const std::string &text)
{
    std::lock_guard<std::mutex> lock(mutex_);
    operations_.push_back({text, false, 0});
    ++open_;
    return operations_.size() - 1;
}

void Ledger::Close(size_t operation)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (++operations_[operation].closings == 1 && --open_ == 0) {
        changed_.notify_all();
    }
}

void Ledger::Refuse(size_t operation)
{
    std::lock_guard<std::mutex> lock(mutex_);
    operations_[operation].isRefused = true;
    if (operations_[operation].closings == 0 && --open_ == 0) {
        changed_.notify_all();
    }
}

void Ledger::Report(const std::string &problem)
{
    std::lock_guard<std::mutex> lock(mutex_);
    problems_ += problem;
}

bool Ledger::AwaitClosed(std::chrono::milliseconds atMost)
{
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, atMost, [this] { return open_ == 0; });
}

std::string Ledger::OpenOperations()
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::string text;
    for (const Operation &operation : operations_) {
        if (operation.closings == 0 && !operation.isRefused) {
            text += "  " + operation.text + "\n";
        }
    }
    return text;
}

std::string Ledger::Problems()
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::string problems = problems_;
    for (const Operation &operation : operations_) {
        if (operation.closings != (operation.isRefused ? 0 : 1)) {
            problems += operation.text + " called back " + std::to_string(operation.closings) + " times\n";
        }
    }
    return problems;
}

} // namespace Simulation
