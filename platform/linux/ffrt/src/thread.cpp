// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <exception>
#include <utility>

#include "cpp/thread.h"

namespace ffrt {
thread &thread::operator=(thread &&other) noexcept
{
    if (joinable()) {
        std::terminate();
    }
    handle_ = std::move(other.handle_);
    return *this;
}

thread::~thread()
{
    if (joinable()) {
        std::terminate();
    }
}

bool thread::joinable() const noexcept
{
    return static_cast<void *>(handle_) != nullptr;
}

void thread::detach() noexcept
{
    handle_ = task_handle();
}

void thread::join() noexcept
{
    if (joinable()) {
        wait({handle_});
        detach();
    }
}
} // namespace ffrt
