// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "backup/backup_import.h"

#include <map>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include "account/container_lock.h"
#include "account/settings.h"
#include "backup/backup_export.h"
#include "backup/backup_format.h"
#include "backup/backup_reader.h"
#include "util/failure.h"
#include "util/json_util.h"
#include "util/json_writer.h"
#include "util/log.h"

namespace DriveService {

namespace {

using CatalogueTexts = std::map<std::string, std::string>;

constexpr const char *SETTING_UNFINISHED = "restore/catalogue";

[[noreturn]] void RefuseToReplace(const std::string &what)
{
    throw RequestError(ErrorCode::INVALID_ARGUMENT,
        what + "; export it first if it is of worth, then import with \"replace\"", "replace");
}

bool IsReplacing(const CatalogueTexts &present, const CatalogueTexts &wanted, std::string &bundleName)
{
    for (const auto &[bundle, text] : wanted) {
        auto found = present.find(bundle);
        if (found != present.end() && found->second != text) {
            bundleName = bundle;
            return true;
        }
    }
    return false;
}

// Who holds a lock counts on being the only one who writes.
void RequireNoLock(ReadSession &view, int64_t nowMs)
{
    std::set<std::string> names;
    view.VisitRows(BackupTable::SETTINGS, [&](const Json::Value &row) { names.insert(TextMember(row, "name")); });
    const std::string prefix = SETTINGS_LOCK;
    for (const std::string &name : names) {
        size_t slash = name.find('/', prefix.size());
        if (name.compare(0, prefix.size(), prefix) != 0 || slash == std::string::npos) {
            continue;
        }
        DatabaseKey key{name.substr(prefix.size(), slash - prefix.size()), name.substr(slash + 1)};
        if (FindLockHolder(view, key, nowMs)) {
            throw RequestError(
                ErrorCode::LOCK_HELD, "container \"" + key.containerName + "\" of bundle \"" + key.bundleName +
                                          "\" is locked by a session; import when the lock is released or has run out");
        }
    }
}

int64_t ServedVersionOf(const std::string &text)
{
    Json::Value served;
    std::string ignored;
    bool isGood = ParseJson(text, served, ignored) && served.isObject() && served["version"].isInt64();
    return isGood ? served["version"].asInt64() : -1;
}

void AddSetting(WriteSession &session, const Json::Value &row)
{
    const std::string prefix = SETTINGS_SERVED_VERSIONS;
    std::string name = TextMember(row, "name");
    if (!BelongsToBackup(name)) {
        throw BackupRowError("a setting of this name is in no backup");
    }
    std::optional<std::string> present;
    if (name.compare(0, prefix.size(), prefix) == 0) {
        present = session.View().Setting(name);
    }
    if (!present) {
        session.AddRow(BackupTable::SETTINGS, row);
    } else if (ServedVersionOf(TextMember(row, "value")) > ServedVersionOf(*present)) {
        // Versions that clients have seen must never come down.
        session.SetSetting(name, TextMember(row, "value"));
    }
}

void AddRows(WriteSession &session, BackupReader &reader, int64_t nowMs)
{
    for (const BackupFile &file : BACKUP_FILES) {
        reader.ReadEntries(file.name, [&](const Json::Value &row) {
            if (file.table == BackupTable::SETTINGS) {
                AddSetting(session, row);
            } else {
                session.AddRow(file.table, row);
            }
        });
    }
    session.DropExpiredSubscriptions(nowMs);
}

// Everything may have changed for whoever follows a container that had records, or has some now.
void AddNotices(WriteSession &session, const std::vector<WrittenType> &before, int64_t nowMs)
{
    struct Written {
        std::set<std::string> scopes;
        std::set<std::string> types;
    };
    std::map<std::pair<std::string, std::string>, Written> containers;
    std::vector<WrittenType> after = session.View().WrittenTypes();
    after.insert(after.end(), before.begin(), before.end());
    for (const WrittenType &written : after) {
        Written &container = containers[{written.database.bundleName, written.database.containerName}];
        container.scopes.insert(ScopeName(written.database.databaseType));
        container.types.insert(written.recordType);
    }
    for (const Subscription &subscription : session.View().Subscriptions("", "", nowMs)) {
        auto found = containers.find({subscription.bundleName, subscription.containerName});
        if (found != containers.end()) {
            session.AddNotice(subscription.id, {ListText(found->second.scopes), ListText(found->second.types), ""});
        }
    }
}

std::string WriteTexts(const CatalogueTexts &texts)
{
    Json::Value json(Json::objectValue);
    for (const auto &[bundleName, text] : texts) {
        json[bundleName] = text;
    }
    return WriteJson(json);
}

} // namespace

void ImportBackup(ServiceContext &context, const std::string &folder, bool replace)
{
    BackupReader reader(folder);
    CatalogueTexts catalogue = reader.ReadCatalogue();
    std::string bundleName;
    if (!replace && IsReplacing(context.catalogue.Texts(), catalogue, bundleName)) {
        RefuseToReplace("the catalogue has another file of bundle \"" + bundleName + "\"");
    }
    int64_t nowMs = context.nowMs();
    {
        std::unique_ptr<WriteSession> session = context.store.BeginWrite();
        session->StandAlone();
        std::vector<WrittenType> before = session->View().WrittenTypes();
        if (!replace && !before.empty()) {
            RefuseToReplace("there are records already, for one in container \"" +
                            before.front().database.containerName + "\" of bundle \"" +
                            before.front().database.bundleName + "\"");
        }
        RequireNoLock(session->View(), nowMs);
        // First, so that none stands in the way of one from the backup.
        session->DropExpiredSubscriptions(nowMs);
        session->BeginRestore(SETTINGS_SERVED_VERSIONS);
        AddRows(*session, reader, nowMs);
        std::string contradiction = session->FindContradiction();
        if (!contradiction.empty()) {
            throw RequestError(ErrorCode::INVALID_ARGUMENT,
                folder + " contradicts itself: " + contradiction + "; take another copy of the backup", "folder");
        }
        AddNotices(*session, before, nowMs);
        // With the records or not at all: what a crash leaves undone, the next start of the service does.
        session->SetSetting(SETTING_UNFINISHED, WriteTexts(catalogue));
        session->Commit();
    }
    LogInfo("imported from " + folder);
    FinishImport(context.store, context.catalogue);
}

void FinishImport(Store &store, Catalogue &catalogue)
{
    std::string text = store.BeginRead()->Setting(SETTING_UNFINISHED).value_or("");
    if (text.empty()) {
        return;
    }
    Json::Value json;
    std::string error;
    if (!ParseJson(text, json, error) || !json.isObject()) {
        throw std::runtime_error(std::string("the setting ") + SETTING_UNFINISHED + " is damaged: " + error);
    }
    CatalogueTexts texts;
    for (const std::string &bundleName : json.getMemberNames()) {
        texts.emplace(bundleName, TextMember(json, bundleName.c_str()));
    }
    try {
        catalogue.Install(texts);
    } catch (const std::runtime_error &failure) {
        throw std::runtime_error(std::string("the data of a backup is imported, but not its catalogue: ") +
                                 failure.what() + "; mend this and start the service again");
    }
    std::unique_ptr<WriteSession> session = store.BeginWrite();
    session->SetSetting(SETTING_UNFINISHED, "");
    session->Commit();
}

} // namespace DriveService
