// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "process_figures.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <malloc.h>

namespace NubisBench {
namespace {
namespace fs = std::filesystem;

// The number behind the name at the start of a line.
int64_t NumberIn(const fs::path &file, const std::string &name)
{
    std::ifstream stream(file);
    std::string line;
    while (std::getline(stream, line)) {
        if (line.rfind(name, 0) == 0) {
            return std::stoll(line.substr(name.size()));
        }
    }
    throw std::runtime_error("no " + name + " in " + file.string());
}

fs::path FolderOf(int pid)
{
    return fs::path("/proc") / (pid == 0 ? "self" : std::to_string(pid));
}

int64_t KilobytesOf(const char *name)
{
    constexpr int64_t kilobyte = 1024;
    return NumberIn("/proc/self/status", name) * kilobyte;
}

} // namespace

int64_t ResidentBytes()
{
    return KilobytesOf("VmRSS:");
}

int64_t PeakResidentBytes()
{
    return KilobytesOf("VmHWM:");
}

void ForgetPeak()
{
    std::ofstream stream("/proc/self/clear_refs");
    stream << "5" << std::flush;
    if (!stream) {
        throw std::runtime_error("the kernel does not forget the peak of memory");
    }
}

void TrimMemory()
{
    malloc_trim(0);
}

Activity ActivityOf(int pid)
{
    Activity activity;
    for (const auto &task : fs::directory_iterator(FolderOf(pid) / "task")) {
        if (!fs::exists(task.path() / "status")) {
            // It has just ended.
            continue;
        }
        activity.wakeUps += NumberIn(task.path() / "status", "voluntary_ctxt_switches:");
        // The first number, in nanoseconds.
        constexpr double nano = 1e-9;
        activity.cpuSeconds += static_cast<double>(NumberIn(task.path() / "schedstat", "")) * nano;
    }
    return activity;
}

int ThreadsOf(int pid)
{
    return static_cast<int>(NumberIn(FolderOf(pid) / "status", "Threads:"));
}
} // namespace NubisBench
