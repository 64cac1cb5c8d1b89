// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_BACKUP_BACKUP_WRITER_H
#define NUBIS_SERVICE_BACKUP_BACKUP_WRITER_H

#include <memory>
#include <string>

#include <json/json.h>

#include "util/file_handle.h"
#include "util/sha256_stream.h"

namespace DriveService {

// Writes a backup into a folder beside its own, which takes its place when all of it is on disk. Until then, and
// whatever fails, the backup that was there stays. Throws std::runtime_error with what and where; RequestError when the
// place is taken by something that is no backup.
class BackupWriter {
public:
    // An absolute path, of nothing, of an empty folder or of a backup.
    explicit BackupWriter(const std::string &folder);
    // Removes what was not finished.
    ~BackupWriter();
    BackupWriter(const BackupWriter &) = delete;
    BackupWriter &operator=(const BackupWriter &) = delete;

    void BeginFile(const std::string &name);
    // A line of the file that was begun.
    void AddEntry(const Json::Value &entry);
    void EndFile();

    // A whole file of one entry.
    void AddFile(const std::string &name, const std::string &content);

    // Puts the backup in its place. Returns the list of its files as the manifest has it.
    Json::Value Finish();

private:
    void Put(const std::string &text);
    void FlushBuffer();
    void TakePlace();

    std::string folder_;
    std::string unfinished_;
    Json::Value files_{Json::arrayValue};

    // Of the file that was begun.
    std::string name_;
    std::unique_ptr<FileHandle> file_;
    std::unique_ptr<Sha256Stream> digest_;
    std::string buffer_;
    int64_t entries_ = 0;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_BACKUP_BACKUP_WRITER_H
