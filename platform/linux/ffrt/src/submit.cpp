// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "cpp/task.h"

#include "core.h"
#include "task.h"

namespace {
using Host::Ffrt::CoreLock;
using Host::Ffrt::Family;
using Host::Ffrt::GetCore;
using Host::Ffrt::Task;
using Host::Ffrt::TaskAttributes;

static_assert(sizeof(TaskAttributes) <= sizeof(ffrt_task_attr_t) && alignof(TaskAttributes) <= alignof(uint64_t),
    "the storage of ffrt_task_attr_t is too small");

TaskAttributes &AttributesIn(ffrt_task_attr_t &storage)
{
    return *std::launder(reinterpret_cast<TaskAttributes *>(storage.storage));
}

const TaskAttributes &AttributesIn(const ffrt_task_attr_t &storage)
{
    return *std::launder(reinterpret_cast<const TaskAttributes *>(storage.storage));
}

Task *TaskOf(void *handle)
{
    return static_cast<Task *>(handle);
}

bool IsQos(int qos)
{
    return qos >= ffrt_qos_inherit && qos <= ffrt_qos_user_interactive;
}

std::vector<Task *> TasksOf(std::initializer_list<ffrt::dependence> deps)
{
    std::vector<Task *> tasks;
    for (const ffrt::dependence &dependence : deps) {
        if (dependence.task != nullptr) {
            tasks.push_back(TaskOf(dependence.task));
        }
    }
    return tasks;
}

void Launch(Task &task, const std::vector<Task *> &before)
{
    Family &family = Family::OfCaller();
    CoreLock lock(GetCore().mutex);
    task.Launch(&family, before);
}
} // namespace

namespace ffrt {
task_attr::task_attr(const char *func)
{
    auto *attributes = new (storage) TaskAttributes;
    attributes->qos = qos_default;
    name(func);
}

task_attr::~task_attr()
{
    std::destroy_at(&AttributesIn(*this));
}

task_attr &task_attr::name(const char *name)
{
    AttributesIn(*this).name = name == nullptr ? "" : name;
    return *this;
}

const char *task_attr::name() const
{
    return AttributesIn(*this).name.c_str();
}

task_attr &task_attr::qos(ffrt::qos qos_)
{
    AttributesIn(*this).qos = IsQos(qos_) ? qos_ : static_cast<int>(ffrt_qos_default);
    return *this;
}

int task_attr::qos() const
{
    return AttributesIn(*this).qos;
}

task_attr &task_attr::delay(uint64_t delay_us)
{
    AttributesIn(*this).delayUs = delay_us;
    return *this;
}

task_attr &task_attr::stack_size(uint64_t size)
{
    AttributesIn(*this).stackSize = size;
    return *this;
}

task_attr &task_attr::timeout(uint64_t timeout_us)
{
    AttributesIn(*this).timeoutUs = timeout_us;
    return *this;
}

uint64_t task_handle::get_id() const
{
    return handle_ == nullptr ? 0 : TaskOf(handle_)->Id();
}

dependence::dependence(const task_handle &handle) : task(static_cast<void *>(handle))
{
    if (task != nullptr) {
        TaskOf(task)->AddReference();
    }
}

dependence::dependence(const dependence &other) : task(other.task)
{
    if (task != nullptr) {
        TaskOf(task)->AddReference();
    }
}

dependence::~dependence()
{
    ffrt_task_handle_destroy(task);
}

void submit(std::function<void()> &&func, const task_attr &attr)
{
    Launch(*new Task(std::move(func), AttributesIn(attr)), {});
}

void submit(const std::function<void()> &func, const task_attr &attr)
{
    submit(std::function<void()>(func), attr);
}

task_handle submit_h(std::function<void()> &&func, const task_attr &attr)
{
    return submit_h(std::move(func), {}, {}, attr);
}

task_handle submit_h(const std::function<void()> &func, const task_attr &attr)
{
    return submit_h(std::function<void()>(func), {}, {}, attr);
}

task_handle submit_h(std::function<void()> &&func, std::initializer_list<dependence> in_deps,
    std::initializer_list<dependence> out_deps, const task_attr &attr)
{
    (void)out_deps;
    auto *task = new Task(std::move(func), AttributesIn(attr));
    task->AddReference();
    Launch(*task, TasksOf(in_deps));
    return task_handle(task);
}

task_handle submit_h(const std::function<void()> &func, std::initializer_list<dependence> in_deps,
    std::initializer_list<dependence> out_deps, const task_attr &attr)
{
    return submit_h(std::function<void()>(func), in_deps, out_deps, attr);
}

void wait()
{
    Family &family = Family::OfCaller();
    CoreLock lock(GetCore().mutex);
    family.AwaitAll(lock);
}

void wait(std::initializer_list<dependence> deps)
{
    const std::vector<Task *> tasks = TasksOf(deps);
    CoreLock lock(GetCore().mutex);
    for (Task *task : tasks) {
        task->AwaitEnd(lock);
    }
}

namespace this_task {
uint64_t get_id()
{
    Task *task = Task::Current();
    return task == nullptr ? 0 : task->Id();
}

int update_qos(qos qos_)
{
    if (!IsQos(qos_)) {
        return ffrt_error_inval;
    }
    return Task::Current() == nullptr ? ffrt_error : ffrt_success;
}
} // namespace this_task
} // namespace ffrt

uint32_t ffrt_task_handle_dec_ref(ffrt_task_handle_t handle)
{
    return handle == nullptr ? 0 : TaskOf(handle)->DropReference();
}

void ffrt_task_handle_destroy(ffrt_task_handle_t handle)
{
    ffrt_task_handle_dec_ref(handle);
}
