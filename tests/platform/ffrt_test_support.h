// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_TEST_SUPPORT_H
#define FFRT_TEST_SUPPORT_H

#include <chrono>
#include <condition_variable>
#include <mutex>

constexpr std::chrono::seconds GENEROUS(50);

// Counts up and lets threads wait for a count; blocks outside FFRT on purpose.
class Counter {
public:
    void Add()
    {
        std::lock_guard<std::mutex> guard(lock_);
        ++count_;
        changed_.notify_all();
    }
    int Get() const
    {
        std::lock_guard<std::mutex> guard(lock_);
        return count_;
    }
    bool WaitFor(int count) const
    {
        std::unique_lock<std::mutex> guard(lock_);
        return changed_.wait_for(guard, GENEROUS, [this, count]() { return count_ >= count; });
    }

private:
    mutable std::mutex lock_;
    mutable std::condition_variable changed_;
    int count_ = 0;
};

#endif
