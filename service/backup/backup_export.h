// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_BACKUP_BACKUP_EXPORT_H
#define NUBIS_SERVICE_BACKUP_BACKUP_EXPORT_H

#include <string>

#include <json/json.h>

#include "requests/request.h"

namespace DriveService {

// Writes all that the user has into the folder (backup_format.h), as it is at one moment, while others write. Returns
// the list of the files. Throws as BackupWriter does, and leaves everything as it was then.
Json::Value ExportBackup(ServiceContext &context, const std::string &folder);

// Whether a setting goes into backups. Access tokens and locks are of the moment only, and an import that is not
// finished is finished by the service itself.
bool BelongsToBackup(const std::string &setting);

} // namespace DriveService

#endif // NUBIS_SERVICE_BACKUP_BACKUP_EXPORT_H
