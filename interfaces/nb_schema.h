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

/// One field of a record type.
struct NBSchemaField {
    /// Unique within its record type.
    std::string name;
    /// NB_FIELD_NULL when the service named a type that this library does not know.
    NBRecordFieldType type = NB_FIELD_NULL;
    /// The field is part of the record's identity in the app's own tables.
    bool primary = false;
    /// The field may be without a value.
    bool nullable = false;
    /// The field may stand in the orderings of a query.
    bool sortable = false;
    /// Passed on from the service; the library does not look at it.
    bool searchable = false;
    /// The field may stand in the conditions of a query.
    bool queryable = false;
    /// The type of the elements, when type is NB_FIELD_LIST.
    NBRecordFieldType listType = NB_FIELD_NULL;
    /// The record type that a reference points to; empty when the schema names none.
    std::string refRecordType;
};

/// One relation of a record type to another.
struct NBSchemaRelation {
    /// What NBRelation::relationName names.
    std::string relationName;
    /// The type of the related records.
    std::string recordType;
    /// From the field of this record type to the field of the related one.
    std::map<std::string, std::string> refFields;
};

/// One record type.
struct NBSchemaNode {
    /// Unique within the container.
    std::string recordType;
    /// The name that the catalogue suggests for a local table; the library does not use it.
    std::string tableName;
    /// By name.
    std::map<std::string, NBSchemaField> fields;
    /// The fields that together identify duplicates.
    std::vector<std::string> dupCheckFields;
    /// As tableName, for records of the shared database.
    std::string sharedTableName;
    /// The relations that records of this type may have.
    std::vector<NBSchemaRelation> relations;
};

/// A record type and its table.
struct NBOrderTable {
    /// As in NBSchemaNode.
    std::string recordType;
    /// As in NBSchemaNode.
    std::string tableName;
};

/// The schema of a container.
struct NBSchema {
    /// Changes with the schema. 0 in what NubisNative::GetSchemaInfo fills.
    int32_t version = 0;
    /// By record type.
    std::map<std::string, NBSchemaNode> recordTypes;
    /// The schema as the service sent it, as compact JSON text.
    std::string schemaData;
    /// The record types in the order in which the schema lists them.
    std::vector<NBOrderTable> orderTables;
};
} // namespace Nubis

#endif // NB_SCHEMA_H
