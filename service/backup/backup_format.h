// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_BACKUP_BACKUP_FORMAT_H
#define NUBIS_SERVICE_BACKUP_BACKUP_FORMAT_H

#include "store/store_types.h"

namespace DriveService {

// A backup is a folder:
//
//   manifest.json            {"format", "version", "files": [{"name", "entries", "sha256"}]}: all other files
//   databases.jsonl ...      the tables below, a JSON object on each line, sorted by their keys
//   catalogue/BUNDLE.json    catalogue files as they are, one entry each
//
// The same data gives the same bytes.
constexpr const char *BACKUP_FORMAT = "nubis-drive-backup";
constexpr int BACKUP_VERSION = 1;
constexpr const char *BACKUP_MANIFEST = "manifest.json";
constexpr const char *BACKUP_CATALOGUE = "catalogue";

struct BackupFile {
    BackupTable table;
    const char *name;
};

// In the order in which they are written and put back.
constexpr BackupFile BACKUP_FILES[] = {
    {BackupTable::DATABASES, "databases.jsonl"},
    {BackupTable::RECORDS, "records.jsonl"},
    {BackupTable::ASSETS, "assets.jsonl"},
    {BackupTable::SETTINGS, "settings.jsonl"},
    {BackupTable::SUBSCRIPTIONS, "subscriptions.jsonl"},
};

} // namespace DriveService

#endif // NUBIS_SERVICE_BACKUP_BACKUP_FORMAT_H
