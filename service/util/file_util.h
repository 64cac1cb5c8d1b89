// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_UTIL_FILE_UTIL_H
#define NUBIS_SERVICE_UTIL_FILE_UTIL_H

#include <cstdint>
#include <optional>
#include <string>

namespace DriveService {

// Failures are thrown as std::runtime_error with the path and the system's cause, unless said otherwise.

// Makes the folder and those above it, each with mode 0700; one that is there stays as it is.
void MakePrivateFolder(const std::string &path);

// The whole file; empty when there is none, or `limit` bytes do not hold it, or it cannot be read (`error` says so).
std::optional<std::string> ReadFile(const std::string &path, size_t limit, std::string &error);

// Writes beside, flushes to disk and renames, so that a reader or a crash meets the old or the new file, whole.
void ReplaceFile(const std::string &path, const std::string &content);

// Tells one state of a file from another without reading it.
struct FileSignature {
    int64_t modifiedNs = 0;
    int64_t changedNs = 0;
    int64_t size = 0;
    uint64_t inode = 0;

    bool operator==(const FileSignature &other) const
    {
        return modifiedNs == other.modifiedNs && changedNs == other.changedNs && size == other.size &&
               inode == other.inode;
    }
};

// Empty when there is no such regular file.
std::optional<FileSignature> SignatureOf(const std::string &path);

} // namespace DriveService

#endif // NUBIS_SERVICE_UTIL_FILE_UTIL_H
