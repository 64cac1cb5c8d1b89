// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "file_lock.h"

#include <fcntl.h>
#include <sys/file.h>

namespace Host {

bool FileLock::TryLock(const std::string &path)
{
    constexpr mode_t mode = 0600;
    if (fd_) {
        return true;
    }
    Ipc::UniqueFd fd(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, mode));
    if (!fd || flock(fd.Get(), LOCK_EX | LOCK_NB) != 0) {
        return false;
    }
    fd_ = std::move(fd);
    return true;
}

void FileLock::Unlock()
{
    fd_.Reset();
}

} // namespace Host
