// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <string>
#include <unistd.h>

#include "log_sink.h"

namespace Host {
namespace {

constexpr unsigned int DOMAIN_MASK = 0xFFFFF;
constexpr mode_t FILE_MODE = 0600;
constexpr long NANOSECONDS_PER_MILLISECOND = 1000000;

struct Sink {
    int fd = STDERR_FILENO;
    // A long line into a pipe is not atomic by itself.
    std::mutex mutex;
};

Sink *OpenSink()
{
    auto *sink = new Sink;
    const char *path = std::getenv("NUBIS_LOG_FILE");
    if (path != nullptr && *path != '\0') {
        int fd = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY, FILE_MODE);
        sink->fd = fd >= 0 ? fd : STDERR_FILENO;
    }
    return sink;
}

// As hilog shows them: a letter for the type and the last five digits of the domain.
char TypeLetter(LogType type)
{
    static constexpr char LETTERS[LOG_TYPE_MAX] = {'A', 'I', '-', 'C', 'K', 'P'};
    return LETTERS[type];
}

char LevelLetter(LogLevel level)
{
    static constexpr char LETTERS[] = {'D', 'I', 'W', 'E', 'F'};
    return LETTERS[level - LOG_DEBUG];
}

std::string MakeHead(LogType type, LogLevel level, unsigned int domain, std::string_view tag)
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local = {};
    localtime_r(&now.tv_sec, &local);
    char time[32];
    size_t size = strftime(time, sizeof(time), "%m-%d %H:%M:%S", &local);
    char head[128];
    int length = std::snprintf(head, sizeof(head), "%.*s.%03ld %5d %5d %c %c%05X/", static_cast<int>(size), time,
        now.tv_nsec / NANOSECONDS_PER_MILLISECOND, static_cast<int>(getpid()), static_cast<int>(gettid()),
        LevelLetter(level), TypeLetter(type), domain & DOMAIN_MASK);
    return std::string(head, static_cast<size_t>(length)).append(tag).append(": ");
}

void WriteAll(Sink &sink, std::string_view data)
{
    std::lock_guard<std::mutex> lock(sink.mutex);
    while (!data.empty()) {
        ssize_t written = write(sink.fd, data.data(), data.size());
        if (written > 0) {
            data.remove_prefix(static_cast<size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return;
        }
    }
}

} // namespace

void WriteLog(LogType type, LogLevel level, unsigned int domain, std::string_view tag, std::string_view text)
{
    static Sink *sink = OpenSink();
    const std::string head = MakeHead(type, level, domain, tag);
    std::string lines;
    lines.reserve(head.size() + text.size() + 1);
    while (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    for (bool more = true; more;) {
        size_t end = text.find('\n');
        more = end != std::string_view::npos;
        lines.append(head).append(text.substr(0, end)).push_back('\n');
        text.remove_prefix(more ? end + 1 : text.size());
    }
    WriteAll(*sink, lines);
}

} // namespace Host
