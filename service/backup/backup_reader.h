// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_BACKUP_BACKUP_READER_H
#define NUBIS_SERVICE_BACKUP_BACKUP_READER_H

#include <functional>
#include <map>
#include <string>

#include <json/json.h>

namespace DriveService {

// Reads a backup and finds whether each file is the one that was written. Throws RequestError (INVALID_ARGUMENT) that
// says which file and line is wrong, and what to do.
class BackupReader {
public:
    // Reads the manifest.
    explicit BackupReader(const std::string &folder);

    // Each line of a file. What `take` has got counts only when the call returns: that the file is damaged shows at its
    // end at the latest. A BackupRowError of `take` becomes the refusal of the line.
    void ReadEntries(const std::string &name, const std::function<void(const Json::Value &entry)> &take);

    // Bundle names and the texts of their catalogue files, which were checked.
    std::map<std::string, std::string> ReadCatalogue();

private:
    struct File {
        int64_t entries = 0;
        std::string sha256;
    };

    [[noreturn]] void Refuse(const std::string &place, const std::string &what) const;
    void ReadManifest();
    // Refuses the file when its digest is not the manifest's.
    void ReadFileBytes(const std::string &name, const std::function<void(std::string_view bytes)> &take) const;

    std::string folder_;
    std::map<std::string, File> files_;
};

// Whether the folder has the manifest of a backup, of any version.
bool IsBackup(const std::string &folder);

} // namespace DriveService

#endif // NUBIS_SERVICE_BACKUP_BACKUP_READER_H
