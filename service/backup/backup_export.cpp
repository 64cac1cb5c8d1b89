// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "backup/backup_export.h"

#include "account/settings.h"
#include "backup/backup_format.h"
#include "backup/backup_writer.h"
#include "util/json_util.h"
#include "util/log.h"

namespace DriveService {

namespace {

bool IsWanted(BackupTable table, const Json::Value &row, int64_t nowMs)
{
    switch (table) {
        case BackupTable::SETTINGS:
            return BelongsToBackup(TextMember(row, "name"));
        case BackupTable::SUBSCRIPTIONS:
            return row["expirationTime"].asInt64() > nowMs;
        default:
            return true;
    }
}

} // namespace

bool BelongsToBackup(const std::string &setting)
{
    for (const std::string prefix : {SETTINGS_ACCESS_TOKEN, SETTINGS_LOCK, SETTINGS_RESTORE}) {
        if (setting.compare(0, prefix.size(), prefix) == 0) {
            return false;
        }
    }
    return true;
}

Json::Value ExportBackup(ServiceContext &context, const std::string &folder)
{
    // Before the view is taken: the store learns of the versions that are served.
    std::map<std::string, std::string> catalogue = context.catalogue.Texts();
    BackupWriter writer(folder);
    std::unique_ptr<ReadSession> session = context.store.BeginRead();
    int64_t nowMs = context.nowMs();
    for (const BackupFile &file : BACKUP_FILES) {
        writer.BeginFile(file.name);
        session->VisitRows(file.table, [&](const Json::Value &row) {
            if (IsWanted(file.table, row, nowMs)) {
                writer.AddEntry(row);
            }
        });
        writer.EndFile();
    }
    session.reset();
    for (const auto &[bundleName, text] : catalogue) {
        writer.AddFile(std::string(BACKUP_CATALOGUE) + "/" + bundleName + ".json", text);
    }
    Json::Value files = writer.Finish();
    LogInfo("exported to " + folder);
    return files;
}

} // namespace DriveService
