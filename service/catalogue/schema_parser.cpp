// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "catalogue/schema_parser.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>

#include "records/limits.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

// Field names stand in query texts before an operator and in comma lists.
bool IsFieldName(const std::string &name)
{
    if (name.empty() || name.size() > MAX_SCHEMA_NAME || std::isdigit(static_cast<unsigned char>(name[0])) != 0) {
        return false;
    }
    return std::all_of(name.begin(), name.end(),
        [](unsigned char c) { return std::isalnum(c) != 0 || c == '_' || c == '-' || c == '.'; });
}

class SchemaParser {
public:
    SchemaParser(const std::string &path, ContainerEntry &container, std::vector<Problem> &problems)
        : path_(path), container_(container), problems_(problems)
    {}

    void Parse(const Json::Value &schema);

private:
    void ParseRecordType(MemberCheck &check);
    void ParseField(MemberCheck &check, RecordTypeRule &rule);
    FieldType ParseTypeWord(MemberCheck &check, const char *member);
    void ParseListType(MemberCheck &check, FieldRule &field);
    void ParseReference(MemberCheck &check, FieldRule &field);
    void ParseDupCheckFields(MemberCheck &check, RecordTypeRule &rule);
    void ParseRelation(MemberCheck &check, RecordTypeRule &rule);

    // Types may name types that come later, so names are only remembered and looked up at the end.
    void NeedType(const std::string &recordType, const std::string &path);

    std::string path_;
    ContainerEntry &container_;
    std::vector<Problem> &problems_;
    std::vector<Problem> neededTypes_; // path and the type's name
};

void SchemaParser::NeedType(const std::string &recordType, const std::string &path)
{
    if (!recordType.empty()) {
        neededTypes_.push_back({path, recordType});
    }
}

void SchemaParser::Parse(const Json::Value &schema)
{
    MemberCheck check(schema, path_, problems_);
    container_.schemaVersion = check.Integer("version", Presence::REQUIRED, 0, std::numeric_limits<int32_t>::max());
    if (const Json::Value *types = check.Array("recordTypes", Presence::REQUIRED)) {
        CheckEach(*types, check.PathOf("recordTypes"), problems_, [this](MemberCheck &type) { ParseRecordType(type); });
    }
    check.Finish();
    for (const Problem &needed : neededTypes_) {
        if (container_.FindType(needed.text) == nullptr) {
            problems_.push_back(
                {needed.path, "expected a record type of this schema, found text \"" + needed.text + "\""});
        }
    }
}

void SchemaParser::ParseRecordType(MemberCheck &check)
{
    RecordTypeRule rule;
    rule.recordType = check.Text("recordType", Presence::REQUIRED);
    check.Text("tableName", Presence::OPTIONAL);
    check.Text("sharedTableName", Presence::OPTIONAL);
    if (const Json::Value *fields = check.Array("fields", Presence::REQUIRED)) {
        CheckEach(*fields, check.PathOf("fields"), problems_, [&](MemberCheck &field) { ParseField(field, rule); });
    }
    ParseDupCheckFields(check, rule);
    if (const Json::Value *relations = check.Array("relations", Presence::OPTIONAL)) {
        CheckEach(*relations, check.PathOf("relations"), problems_,
            [&](MemberCheck &relation) { ParseRelation(relation, rule); });
    }
    if (rule.recordType.empty()) {
        return;
    }
    if (rule.recordType.size() > MAX_SCHEMA_NAME) {
        check.Report("recordType", "expected at most " + std::to_string(MAX_SCHEMA_NAME) + " bytes");
    } else if (!container_.recordTypes.emplace(rule.recordType, rule).second) {
        check.Report("recordType", "\"" + rule.recordType + "\" is there twice");
    }
}

FieldType SchemaParser::ParseTypeWord(MemberCheck &check, const char *member)
{
    std::string word = check.Text(member, Presence::REQUIRED);
    std::optional<FieldType> type = FieldTypeOf(word);
    if (!type && !word.empty()) {
        check.Report(member, "expected one of " + AllFieldTypeWords() + ", found text \"" + word + "\"");
    }
    // A type that allows everything, so that one wrong word is one problem.
    return type.value_or(FieldType::STRING);
}

void SchemaParser::ParseListType(MemberCheck &check, FieldRule &field)
{
    if (field.type != FieldType::LIST) {
        if (!check.Text("listType", Presence::OPTIONAL).empty()) {
            check.Report("listType", "is only for fields of type \"List\"");
        }
        return;
    }
    field.listType = ParseTypeWord(check, "listType");
    if (field.listType == FieldType::LIST) {
        check.Report("listType", "a list of lists is not supported");
    }
}

void SchemaParser::ParseReference(MemberCheck &check, FieldRule &field)
{
    const Json::Value *reference = check.Object("reference", Presence::OPTIONAL);
    if (reference == nullptr) {
        return;
    }
    MemberCheck inner(*reference, check.PathOf("reference"), problems_);
    field.refRecordType = inner.Text("recordType", Presence::REQUIRED);
    inner.Finish();
    if (field.type != FieldType::REFERENCE && field.listType != FieldType::REFERENCE) {
        check.Report("reference", "is only for fields of type \"Reference\" and lists of them");
    }
    NeedType(field.refRecordType, inner.PathOf("recordType"));
}

void SchemaParser::ParseField(MemberCheck &check, RecordTypeRule &rule)
{
    FieldRule field;
    field.name = check.Text("name", Presence::REQUIRED);
    field.type = ParseTypeWord(check, "type");
    ParseListType(check, field);
    ParseReference(check, field);
    field.primary = check.Boolean("primary", Presence::OPTIONAL);
    field.nullable = check.Boolean("nullable", Presence::OPTIONAL);
    field.sortable = check.Boolean("sortable", Presence::OPTIONAL);
    field.searchable = check.Boolean("searchable", Presence::OPTIONAL);
    field.queryable = check.Boolean("queryable", Presence::OPTIONAL);
    if (field.name.empty()) {
        return;
    }
    if (!IsFieldName(field.name)) {
        check.Report("name", "expected at most " + std::to_string(MAX_SCHEMA_NAME) +
                                 " letters, digits, '_', '-' and '.', not beginning with a digit, found text \"" +
                                 field.name + "\"");
    } else if (IsReservedFieldName(field.name)) {
        check.Report("name", "\"" + field.name + "\" is reserved and cannot name a field");
    } else if (!rule.fields.emplace(field.name, field).second) {
        check.Report("name", "\"" + field.name + "\" is there twice");
    }
    bool hasParts = field.type == FieldType::LIST || field.type == FieldType::MAP || field.type == FieldType::ASSET ||
                    field.type == FieldType::BLOB || field.type == FieldType::NOTHING;
    if (field.sortable && hasParts) {
        check.Report("sortable", std::string("a field of type \"") + WordOf(field.type) + "\" cannot be sorted by");
    }
}

void SchemaParser::ParseDupCheckFields(MemberCheck &check, RecordTypeRule &rule)
{
    const Json::Value *names = check.Array("dupCheckFields", Presence::OPTIONAL);
    if (names == nullptr) {
        return;
    }
    for (Json::ArrayIndex i = 0; i < names->size(); ++i) {
        const Json::Value &name = (*names)[i];
        std::string member = "dupCheckFields[" + std::to_string(i) + "]";
        const FieldRule *field = name.isString() ? rule.FindField(name.asString()) : nullptr;
        if (field == nullptr) {
            check.Report(member, "expected the name of a field of this record type, found " + DescribeJson(name));
            continue;
        }
        bool comparable = field->type == FieldType::INTEGER || field->type == FieldType::DOUBLE ||
                          field->type == FieldType::STRING || field->type == FieldType::BOOLEAN ||
                          field->type == FieldType::REFERENCE;
        if (!comparable) {
            check.Report(member, std::string("a field of type \"") + WordOf(field->type) + "\" cannot be compared");
        } else if (std::count(rule.dupCheckFields.begin(), rule.dupCheckFields.end(), field->name) > 0) {
            check.Report(member, "\"" + field->name + "\" is there twice");
        }
        rule.dupCheckFields.push_back(field->name);
    }
}

void SchemaParser::ParseRelation(MemberCheck &check, RecordTypeRule &rule)
{
    RelationRule relation;
    relation.relationName = check.Text("relationName", Presence::REQUIRED);
    relation.recordType = check.Text("recordType", Presence::REQUIRED);
    NeedType(relation.recordType, check.PathOf("recordType"));
    if (rule.FindRelation(relation.relationName) != nullptr) {
        check.Report("relationName", "\"" + relation.relationName + "\" is there twice");
    }
    if (const Json::Value *refField = check.Object("refField", Presence::OPTIONAL)) {
        for (const std::string &name : refField->getMemberNames()) {
            const Json::Value &target = (*refField)[name];
            if (rule.FindField(name) == nullptr) {
                check.Report("refField." + name, "expected the name of a field of this record type");
            }
            if (!target.isString() || target.asString().empty()) {
                check.Report("refField." + name, "expected the name of a field, found " + DescribeJson(target));
            }
        }
    }
    rule.relations.push_back(std::move(relation));
}

} // namespace

bool IsReservedFieldName(const std::string &name)
{
    static const auto *names =
        new std::set<std::string>{"recordId", "recordType", "localRecordId", "srcRecordId", "deleted", "isNew",
            "baseCursor", "baseVersion", "version", "createdTime", "editedTime", "createInfo", "modifiedInfo",
            "relations", "ownerId", "isShared", "privilege", "shareUri", "record", "code", "error", "orderBy"};
    return names->count(name) > 0;
}

void ParseSchema(
    const Json::Value &schema, const std::string &path, ContainerEntry &container, std::vector<Problem> &problems)
{
    SchemaParser(path, container, problems).Parse(schema);
}

} // namespace DriveService
