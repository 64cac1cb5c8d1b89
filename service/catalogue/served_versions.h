// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_CATALOGUE_SERVED_VERSIONS_H
#define NUBIS_SERVICE_CATALOGUE_SERVED_VERSIONS_H

#include <json/json.h>

#include "catalogue/catalogue_types.h"

namespace DriveService {

// Clients notice a changed catalogue entry by its "schemaGroupVersion" and, within it, by the containers' schema
// versions. Whoever edits a file and forgets to raise them would change nothing for them; so the service raises what
// it serves: of each container whose content changed and of the group, above what it last served. Versions never go
// down.
//
// `served` is what was remembered of the last time (null at the first). The entry, its reply included, gets the
// versions to serve; the result is what to remember:
// {"content": DIGEST, "version": N, "containers": {NAME: {"content": DIGEST, "version": N}}}
Json::Value RaiseVersions(AppEntry &entry, const Json::Value &served);

} // namespace DriveService

#endif // NUBIS_SERVICE_CATALOGUE_SERVED_VERSIONS_H
