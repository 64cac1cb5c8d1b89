// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_UNIQUE_FD_H
#define HOST_IPC_UNIQUE_FD_H

#include <unistd.h>
#include <utility>

namespace Host::Ipc {

// Owns a file descriptor.
class UniqueFd {
public:
    explicit UniqueFd(int fd = -1) : fd_(fd)
    {}
    ~UniqueFd()
    {
        Reset();
    }
    UniqueFd(UniqueFd &&other) noexcept : fd_(other.Release())
    {}
    UniqueFd &operator=(UniqueFd &&other) noexcept
    {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }

    int Get() const
    {
        return fd_;
    }
    int Release()
    {
        return std::exchange(fd_, -1);
    }
    void Reset(int fd = -1)
    {
        if (fd_ >= 0) {
            close(fd_);
        }
        fd_ = fd;
    }
    explicit operator bool() const
    {
        return fd_ >= 0;
    }

private:
    int fd_;
};

} // namespace Host::Ipc

#endif // HOST_IPC_UNIQUE_FD_H
