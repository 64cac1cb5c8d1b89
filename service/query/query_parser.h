// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_QUERY_QUERY_PARSER_H
#define NUBIS_SERVICE_QUERY_QUERY_PARSER_H

#include <optional>
#include <string>
#include <vector>

#include "catalogue/catalogue_types.h"
#include "store/store_types.h"

namespace DriveService {

struct ParsedQuery {
    std::vector<Condition> conditions;
    std::vector<SortKey> order;
};

// Reads a query text against the record type that it asks for:
//
//   query     := part { "&" part }, or nothing
//   part      := condition | "orderBy=" ordering { "," ordering }
//   condition := FIELD ( "=" | "!=" | "<" | "<=" | ">" | ">=" | "~" ) VALUE
//   ordering  := FIELD [ " asc" | " desc" ]
//
// A VALUE may hold any character, those with a meaning as %26 (&), %25 (%) and so on; it is read by the field's type.
// "~" asks for a part of a text or for an element of a list. Only queryable fields stand in conditions and only sortable
// ones in orderings. Throws RequestError (INVALID_QUERY or UNKNOWN_FIELD) that names the field.
ParsedQuery ParseQuery(const std::string &text, const RecordTypeRule &rule);

// How the store indexes a type's fields: those that conditions and orderings may use, and the duplicate check's key.
std::vector<IndexedField> IndexedFieldsOf(const RecordTypeRule &rule);

// The key in which two records of the type are alike when they are duplicates; without parts when the type has none.
IndexedField DupCheckKeyOf(const RecordTypeRule &rule);

// The kind under which values of a type are compared; empty for those that cannot be.
std::optional<ValueKind> ValueKindOf(FieldType type);

} // namespace DriveService

#endif // NUBIS_SERVICE_QUERY_QUERY_PARSER_H
