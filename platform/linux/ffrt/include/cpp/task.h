// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_CPP_TASK_H
#define FFRT_CPP_TASK_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <initializer_list>

#include "c/sleep.h"
#include "c/task.h"
#include "c/type_def.h"

namespace ffrt {
// How a task is to run. Owned by the caller; read while the task is submitted and not afterwards. Not thread safe.
class task_attr : public ffrt_task_attr_t {
public:
    // A task without a name bears that of the function in which it is submitted.
    task_attr(const char *func = __builtin_FUNCTION());
    task_attr(const task_attr &) = delete;
    task_attr &operator=(const task_attr &) = delete;
    ~task_attr();

    // The name of the thread while the task runs; the system cuts it to 15 bytes.
    task_attr &name(const char *name);
    const char *name() const;
    // Recorded; every QoS is served alike here. Without a QoS, or with one that does not exist, a task has the default.
    task_attr &qos(ffrt::qos qos_);
    int qos() const;
    // The earliest start, in microseconds from the submission.
    task_attr &delay(uint64_t delay_us);
    // At least this many bytes; never less than the default.
    task_attr &stack_size(uint64_t size);
    // Recorded only: a task that takes longer is not disturbed.
    task_attr &timeout(uint64_t timeout_us);
};

// A counted reference to a submitted task; dropping it does not cancel the task. Not thread safe: guard a handle that
// several threads reach. Move only.
class task_handle {
public:
    task_handle() = default;
    // Takes over the reference that `p` stands for.
    task_handle(ffrt_task_handle_t p) : handle_(p)
    {}
    ~task_handle()
    {
        ffrt_task_handle_destroy(handle_);
    }
    task_handle(const task_handle &) = delete;
    task_handle &operator=(const task_handle &) = delete;
    task_handle(task_handle &&other) noexcept : handle_(other.handle_)
    {
        other.handle_ = nullptr;
    }
    task_handle &operator=(task_handle &&other) noexcept
    {
        if (this != &other) {
            ffrt_task_handle_destroy(handle_);
            handle_ = other.handle_;
            other.handle_ = nullptr;
        }
        return *this;
    }

    // Counts from 1 in this process; 0 for an empty handle.
    uint64_t get_id() const;
    operator void *() const
    {
        return handle_;
    }

private:
    ffrt_task_handle_t handle_ = nullptr;
};

// The end of a task, as something to wait for. An empty handle is nothing to wait for.
struct dependence {
    dependence(const task_handle &handle);
    dependence(const dependence &other);
    dependence &operator=(const dependence &) = delete;
    ~dependence();

    const ffrt_task_handle_t task; // NOLINT(misc-misplaced-const): the handle itself is what must not change
};

// Runs `func` in a thread of the pool. An empty function runs as a task that does nothing. A function that throws
// ends the process. May be called from any thread and inside tasks.
void submit(std::function<void()> &&func, const task_attr &attr = {});
void submit(const std::function<void()> &func, const task_attr &attr = {});

// As submit, and hands out a reference to the task. The task starts when every task of `in_deps` has ended; a handle
// in `out_deps` orders nothing.
task_handle submit_h(std::function<void()> &&func, const task_attr &attr = {});
task_handle submit_h(const std::function<void()> &func, const task_attr &attr = {});
task_handle submit_h(std::function<void()> &&func, std::initializer_list<dependence> in_deps,
    std::initializer_list<dependence> out_deps, const task_attr &attr = {});
task_handle submit_h(const std::function<void()> &func, std::initializer_list<dependence> in_deps,
    std::initializer_list<dependence> out_deps, const task_attr &attr = {});

// Blocks until every task that the calling task (outside a task: the calling thread) has submitted has ended.
void wait();
// Blocks until these tasks have ended. A task has ended when its function and everything it captured is destroyed.
void wait(std::initializer_list<dependence> deps);

namespace this_task {
// The id of the task that calls, 0 outside a task.
uint64_t get_id();
// Returns 0; ffrt_error_inval for a QoS that does not exist, ffrt_error outside a task.
int update_qos(qos qos_);
} // namespace this_task
} // namespace ffrt

#include "cpp/sleep.h"

#endif
