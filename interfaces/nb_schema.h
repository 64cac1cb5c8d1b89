// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_SCHEMA_H
#define NB_SCHEMA_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "nb_record_field_type.h"

namespace Nubis {
// The types below describe what a container may hold. They are plain values, copied out of the app catalogue; a copy
// is not updated when the catalogue changes.

// One field of a record type.
struct NBSchemaField {
    std::string name;
    NBRecordFieldType type = NB_FIELD_NULL;
    bool primary = false;
    bool nullable = false;
    bool sortable = false;
    bool searchable = false;
    bool queryable = false;
    // The type of the elements, when type is NB_FIELD_LIST.
    NBRecordFieldType listType = NB_FIELD_NULL;
    // The record type that a reference points to; empty when the schema names none.
    std::string refRecordType;
};

// One relation of a record type to another.
struct NBSchemaRelation {
    std::string relationName;
    std::string recordType;
    // From the field of this record type to the field of the related one.
    std::map<std::string, std::string> refFields;
};

// One record type.
struct NBSchemaNode {
    std::string recordType;
    std::string tableName;
    std::map<std::string, NBSchemaField> fields;
    // The fields that together identify duplicates.
    std::vector<std::string> dupCheckFields;
    std::string sharedTableName;
    std::vector<NBSchemaRelation> relations;
};

// A record type and its table.
struct NBOrderTable {
    std::string recordType;
    std::string tableName;
};

// The schema of a container.
struct NBSchema {
    int32_t version = 0;
    std::map<std::string, NBSchemaNode> recordTypes;
    // The schema as the service sent it, as compact JSON text.
    std::string schemaData;
    // The record types in the order in which the schema lists them.
    std::vector<NBOrderTable> orderTables;
};
} // namespace Nubis

#endif // NB_SCHEMA_H
