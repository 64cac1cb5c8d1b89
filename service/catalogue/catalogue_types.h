// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_CATALOGUE_CATALOGUE_TYPES_H
#define NUBIS_SERVICE_CATALOGUE_CATALOGUE_TYPES_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <json/json.h>

namespace DriveService {

enum class FieldType {
    NOTHING, // "Null"
    INTEGER, // "Integer" and "Long"
    DOUBLE,
    STRING,
    BOOLEAN,
    BLOB,
    LIST,
    MAP,
    ASSET,
    REFERENCE,
};

// The type of a schema's type word; empty for a word that is none. Words are case-sensitive.
std::optional<FieldType> FieldTypeOf(const std::string &word);

// The word of a type for messages.
const char *WordOf(FieldType type);

// All words, for messages: "Null", "Integer", ...
std::string AllFieldTypeWords();

struct FieldRule {
    std::string name;
    FieldType type = FieldType::NOTHING;
    FieldType listType = FieldType::NOTHING; // of the elements, when type is LIST
    bool primary = false;                    // must have a value
    bool nullable = false;                   // may be without a value
    bool sortable = false;
    bool searchable = false;
    bool queryable = false;
    std::string refRecordType; // of a Reference, or of a list's References; empty: any type
};

struct RelationRule {
    std::string relationName;
    std::string recordType;
};

struct RecordTypeRule {
    std::string recordType;
    std::map<std::string, FieldRule> fields;
    std::vector<std::string> dupCheckFields;
    std::vector<RelationRule> relations;

    // Null when there is no such field or relation.
    const FieldRule *FindField(const std::string &name) const;
    const RelationRule *FindRelation(const std::string &name) const;
};

// What the catalogue says about a container's record ids; what it leaves open is made and kept by the service.
struct RecordIdRule {
    std::optional<unsigned> ruleId;
    std::optional<uint64_t> upid;
    std::string localRule;
    std::optional<std::string> rootId;
};

struct ContainerEntry {
    std::string name;
    int64_t schemaVersion = 0; // as served
    uint32_t maxBatchNumber = 0;
    std::map<std::string, RecordTypeRule> recordTypes;
    RecordIdRule recordIdRule;

    // Null when there is no such record type.
    const RecordTypeRule *FindType(const std::string &recordType) const;
};

// One bundle as the service serves it. Constant once it was made, so that requests share it without a lock.
struct AppEntry {
    std::string bundleName;
    std::string appId;
    int64_t schemaGroupVersion = 0; // as served
    int enableCloud = 0;
    int switchStatus = 0;
    int verifyRemainSpace = 1;
    ContainerEntry defaultContainer;
    std::vector<ContainerEntry> sharedContainers;
    std::map<std::string, std::string> configParams;
    std::set<std::string> demons; // "0" data, "1" files
    Json::Value reply;            // the element of an "appInfo" reply

    // Null when there is no such container.
    const ContainerEntry *FindContainer(const std::string &containerName) const;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_CATALOGUE_CATALOGUE_TYPES_H
