// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_UTIL_FILE_HANDLE_H
#define NUBIS_SERVICE_UTIL_FILE_HANDLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace DriveService {

// An open file or folder, closed at the end of its scope. Failures are thrown as std::runtime_error with the path and
// the system's cause.
class FileHandle {
public:
    // The flags of open; a file that is made gets mode 0600.
    FileHandle(const std::string &path, int flags);
    ~FileHandle();
    FileHandle(const FileHandle &) = delete;
    FileHandle &operator=(const FileHandle &) = delete;

    void Write(std::string_view content);
    // What was written is on disk when it returns.
    void Flush();
    // 0 at the end of the file.
    size_t Read(char *buffer, size_t size);
    bool IsRegularFile() const;

private:
    int fd_;
    std::string path_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_UTIL_FILE_HANDLE_H
