// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_RECORD_JSON_H
#define NUBIS_TOOL_RECORD_JSON_H

#include <string>
#include <vector>

#include <json/json.h>

#include "console.h"
#include "nb_record.h"
#include "nb_schema.h"
#include "table.h"

namespace NubisTool {

// The form in which the tool shows a record, and which `nubis record import` takes back:
//   {"recordId", "recordType", "version", "deleted" and "shared" (when it is), "created", "modified", "relations",
//    "fields": {...}}
Json::Value RecordToJson(const Nubis::NBRecord &record);

// A field's value; unlike the form that is sent, an empty list is [] and an empty map {}.
Json::Value FieldToJson(const Nubis::NBRecordField &field);

// One line, keys in order.
std::string CompactText(const Json::Value &value);
// Several lines, UTF-8 kept as it is.
std::string PrettyText(const Json::Value &value);

// A field's value in a cell of a table: texts as they are, references by their id, the rest as JSON.
std::string FieldToCell(const Nubis::NBRecordField &field);

// Records of one type as a table: id, version, then the named fields (all of the schema when none is named).
void PrintRecordTable(const Console &console, const std::vector<Nubis::NBRecord> &records,
    const Nubis::NBSchemaNode &schemaNode, std::vector<std::string> fieldNames);

// The word of the schema for a type of field, for messages.
std::string FieldTypeName(Nubis::NBRecordFieldType type);

} // namespace NubisTool

#endif
