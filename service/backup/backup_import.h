// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_BACKUP_BACKUP_IMPORT_H
#define NUBIS_SERVICE_BACKUP_BACKUP_IMPORT_H

#include <string>

#include "requests/request.h"

namespace DriveService {

// Puts a backup in the place of all that the user has, in one transaction, or refuses with RequestError and leaves
// everything as it was. Without `replace` a store with records is left alone. Writers wait meanwhile. Every database is
// a new one afterwards, so that no cursor from before fits, and every subscription to a container that had or has
// records is told.
void ImportBackup(ServiceContext &context, const std::string &folder, bool replace);

// Puts the catalogue files of an import in place that has been committed and no further; nothing when there is none.
// Throws std::runtime_error when a file cannot be written.
void FinishImport(Store &store, Catalogue &catalogue);

} // namespace DriveService

#endif // NUBIS_SERVICE_BACKUP_BACKUP_IMPORT_H
