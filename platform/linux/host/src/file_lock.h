// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_FILE_LOCK_H
#define HOST_FILE_LOCK_H

#include <string>

#include "unique_fd.h"

namespace Host {

// A lock between processes that a dying process gives up by itself.
class FileLock {
public:
    // Tries to take the lock at `path`; true also when this object has it already.
    bool TryLock(const std::string &path);
    void Unlock();

private:
    Ipc::UniqueFd fd_;
};

} // namespace Host

#endif // HOST_FILE_LOCK_H
