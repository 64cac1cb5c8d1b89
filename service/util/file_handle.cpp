// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/file_handle.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace DriveService {

namespace {

[[noreturn]] void Fail(const char *action, const std::string &path)
{
    throw std::runtime_error(std::string("cannot ") + action + " " + path + ": " + std::strerror(errno));
}

} // namespace

FileHandle::FileHandle(const std::string &path, int flags)
    : fd_(open(path.c_str(), flags | O_CLOEXEC, S_IRUSR | S_IWUSR)), path_(path)
{
    if (fd_ < 0) {
        Fail("open", path_);
    }
}

FileHandle::~FileHandle()
{
    close(fd_);
}

void FileHandle::Write(std::string_view content)
{
    while (!content.empty()) {
        ssize_t count = write(fd_, content.data(), content.size());
        if (count < 0 && errno != EINTR) {
            Fail("write", path_);
        }
        content.remove_prefix(count < 0 ? 0 : static_cast<size_t>(count));
    }
}

void FileHandle::Flush()
{
    if (fsync(fd_) != 0) {
        Fail("flush", path_);
    }
}

size_t FileHandle::Read(char *buffer, size_t size)
{
    ssize_t count = -1;
    do {
        count = read(fd_, buffer, size);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        Fail("read", path_);
    }
    return static_cast<size_t>(count);
}

bool FileHandle::IsRegularFile() const
{
    struct stat info {};
    return fstat(fd_, &info) == 0 && S_ISREG(info.st_mode);
}

} // namespace DriveService
