// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "event_file.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/event_log.h"
#include "host/paths.h"
#include "unique_fd.h"

namespace Host {

namespace {

std::string EventsDir()
{
    return StateDir() + "/events";
}

Ipc::UniqueFd OpenForAppending(const std::string &path)
{
    return Ipc::UniqueFd(open(path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
}

// With O_APPEND one write is one piece; a second write could end up behind somebody else's line.
ssize_t WriteAtOnce(int file, const std::string &bytes)
{
    ssize_t written = -1;
    do {
        written = write(file, bytes.data(), bytes.size());
    } while (written < 0 && errno == EINTR);
    return written;
}

bool WriteLine(int file, const std::string &line)
{
    return WriteAtOnce(file, line) == static_cast<ssize_t>(line.size());
}

bool TryLock(int file)
{
    return flock(file, LOCK_EX | LOCK_NB) == 0;
}

bool EndsWithinLine(int file, off_t size)
{
    char last = '\n';
    return size > 0 && pread(file, &last, 1, size - 1) == 1 && last != '\n';
}

// Not where somebody without the lock has written behind it: the next line begins with the end of this one.
void TakeBack(int file, off_t before, ssize_t written)
{
    struct stat status = {};
    if (fstat(file, &status) == 0 && status.st_size == before + written) {
        static_cast<void>(ftruncate(file, before) == 0);
    }
}

// Whether the path still names this file: another process may have begun a new one.
bool IsAt(const std::string &path, const struct stat &opened)
{
    struct stat present = {};
    return lstat(path.c_str(), &present) == 0 && present.st_ino == opened.st_ino && present.st_dev == opened.st_dev;
}

// With the lock on the file. Begins a new one when this one is full, ends a line that was cut, and takes back what of
// the new line does not fit on the disk.
bool AppendTidily(const std::string &instanceTag, Ipc::UniqueFd file, const std::string &line)
{
    const std::string path = EventLogPath(instanceTag);
    struct stat status = {};
    if (fstat(file.Get(), &status) != 0) {
        return false;
    }
    if (static_cast<size_t>(status.st_size) + line.size() > MAX_EVENT_LOG_BYTES && IsAt(path, status)) {
        // Whoever writes to the full one just now does not lose the line.
        if (rename(path.c_str(), OldEventLogPath(instanceTag).c_str()) != 0) {
            return false;
        }
        file = OpenForAppending(path);
        // Another process may have been faster to write to the new one, or to tidy it.
        if (!TryLock(file.Get())) {
            return WriteLine(file.Get(), line);
        }
        if (fstat(file.Get(), &status) != 0) {
            return false;
        }
    }
    const std::string bytes = EndsWithinLine(file.Get(), status.st_size) ? "\n" + line : line;
    const ssize_t written = WriteAtOnce(file.Get(), bytes);
    const bool isWhole = written == static_cast<ssize_t>(bytes.size());
    if (written > 0 && !isWhole) {
        TakeBack(file.Get(), status.st_size, written);
    }
    return isWhole;
}

} // namespace

std::string EventLogPath(const std::string &instanceTag)
{
    return EventsDir() + "/" + instanceTag + ".jsonl";
}

std::string OldEventLogPath(const std::string &instanceTag)
{
    return EventLogPath(instanceTag) + ".old";
}

bool AppendEventLine(const std::string &instanceTag, const std::string &line)
{
    static auto *mutex = new std::mutex();
    std::string error;
    if (!MakeDirs(EventsDir(), error)) {
        return false;
    }
    std::lock_guard<std::mutex> lock(*mutex);
    Ipc::UniqueFd file = OpenForAppending(EventLogPath(instanceTag));
    if (!file) {
        return false;
    }
    if (TryLock(file.Get())) {
        return AppendTidily(instanceTag, std::move(file), line);
    }
    // Tidying is worth no waiting: the process that holds the lock may be stopped.
    return WriteLine(file.Get(), line);
}

} // namespace Host
