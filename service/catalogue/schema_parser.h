// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_CATALOGUE_SCHEMA_PARSER_H
#define NUBIS_SERVICE_CATALOGUE_SCHEMA_PARSER_H

#include <string>
#include <vector>

#include <json/json.h>

#include "catalogue/catalogue_types.h"
#include "catalogue/member_check.h"

namespace DriveService {

// Reads and checks a container's "schema" object; `path` is its place in the file.
void ParseSchema(
    const Json::Value &schema, const std::string &path, ContainerEntry &container, std::vector<Problem> &problems);

// Whether a data field may not have this name, because records carry bookkeeping under it or queries mean something
// else by it.
bool IsReservedFieldName(const std::string &name);

} // namespace DriveService

#endif // NUBIS_SERVICE_CATALOGUE_SCHEMA_PARSER_H
