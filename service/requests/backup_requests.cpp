// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include <filesystem>

#include "backup/backup_export.h"
#include "backup/backup_import.h"
#include "util/failure.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

// The service's own folder is of no meaning to a client, so relative paths have none either.
std::string FolderOf(const Request &request)
{
    std::string text = request.NonEmptyText("folder");
    std::filesystem::path path = std::filesystem::path(text).lexically_normal();
    if (!path.has_filename()) {
        path = path.parent_path();
    }
    if (!path.is_absolute() || !path.has_filename() || text.find('\0') != std::string::npos) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            "request member \"folder\": expected the absolute path of a folder, came \"" + Excerpt(text) + "\"",
            "folder");
    }
    return path.string();
}

} // namespace

Json::Value ExportData(ServiceContext &context, const Request &request)
{
    std::string folder = FolderOf(request);
    Json::Value reply = Success();
    Json::Value &backup = reply["backup"];
    backup["files"] = ExportBackup(context, folder);
    backup["folder"] = folder;
    return reply;
}

Json::Value ImportData(ServiceContext &context, const Request &request)
{
    std::string folder = FolderOf(request);
    ImportBackup(context, folder, request.BooleanOr("replace", false));
    Json::Value reply = Success();
    reply["backup"]["folder"] = folder;
    return reply;
}

} // namespace DriveService
