// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "record_json.h"

#include <array>
#include <utility>

#include "nb_record_field.h"

namespace NubisTool {
namespace {

Json::Value ChangeToJson(const Nubis::NBRecordsResponse &change)
{
    Json::Value json(Json::objectValue);
    json["time"] = Json::Int64(change.time);
    json["deviceName"] = change.deviceName;
    json["appId"] = change.appId;
    return json;
}

void WriteIndented(const Json::Value &value, const std::string &indent, std::string &text)
{
    bool isObject = value.isObject();
    if ((!isObject && !value.isArray()) || value.empty()) {
        text += CompactText(value);
        return;
    }
    std::string inner = indent + "  ";
    const char *separator = isObject ? "{\n" : "[\n";
    for (auto member = value.begin(); member != value.end(); ++member) {
        text += separator + inner;
        if (isObject) {
            text += CompactText(member.key()) + ": ";
        }
        WriteIndented(*member, inner, text);
        separator = ",\n";
    }
    text += "\n" + indent + (isObject ? "}" : "]");
}

} // namespace

Json::Value FieldToJson(const Nubis::NBRecordField &field)
{
    Json::Value json;
    if (Nubis::NBFieldList list; field.GetRecordList(list) == Nubis::NB_LOCAL_SUCCESS) {
        json = Json::Value(Json::arrayValue);
        for (const Nubis::NBRecordField &element : list) {
            json.append(FieldToJson(element));
        }
    } else if (Nubis::NBFieldMap map; field.GetRecordMap(map) == Nubis::NB_LOCAL_SUCCESS) {
        json = Json::Value(Json::objectValue);
        for (const auto &[name, element] : map) {
            json[name] = FieldToJson(element);
        }
    } else {
        json = field.ToJsonValue();
    }
    return json;
}

Json::Value RecordToJson(const Nubis::NBRecord &record)
{
    Json::Value json(Json::objectValue);
    json["recordId"] = record.GetRecordId();
    json["recordType"] = record.GetRecordType();
    json["version"] = Json::UInt64(record.GetVersion());
    if (record.GetIsDelete()) {
        json["deleted"] = true;
    }
    if (record.GetShared()) {
        json["shared"] = true;
    }
    if (auto created = record.GetRecordCreateInfo(); created.time != 0) {
        json["created"] = ChangeToJson(created);
    }
    if (auto modified = record.GetRecordModifiedInfo(); modified.time != 0) {
        json["modified"] = ChangeToJson(modified);
    }
    std::vector<Nubis::NBRelation> relations;
    record.GetRecordRelations(relations);
    for (const Nubis::NBRelation &relation : relations) {
        Json::Value entry(Json::objectValue);
        entry["relationName"] = relation.relationName;
        entry["recordType"] = relation.recordType;
        entry["recordId"] = relation.recordId;
        json["relations"].append(std::move(entry));
    }
    Nubis::NBFieldMap data;
    record.GetRecordData(data);
    json["fields"] = Json::Value(Json::objectValue);
    for (const auto &[name, field] : data) {
        json["fields"][name] = FieldToJson(field);
    }
    return json;
}

std::string CompactText(const Json::Value &value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

std::string PrettyText(const Json::Value &value)
{
    std::string text;
    WriteIndented(value, "", text);
    return text;
}

std::string FieldToCell(const Nubis::NBRecordField &field)
{
    if (std::string text; field.GetString(text) == Nubis::NB_LOCAL_SUCCESS) {
        return text;
    }
    if (Nubis::NBReference reference; field.GetReference(reference) == Nubis::NB_LOCAL_SUCCESS) {
        return reference.recordId;
    }
    return field.GetType() == Nubis::NB_FIELD_NULL ? "" : CompactText(FieldToJson(field));
}

void PrintRecordTable(const Console &console, const std::vector<Nubis::NBRecord> &records,
    const Nubis::NBSchemaNode &schemaNode, std::vector<std::string> fieldNames)
{
    if (fieldNames.empty()) {
        for (const auto &[name, field] : schemaNode.fields) {
            fieldNames.push_back(name);
        }
    }
    std::vector<Column> columns = {{"ID"}, {"VERSION", Align::RIGHT}};
    for (const std::string &name : fieldNames) {
        auto field = schemaNode.fields.find(name);
        bool isNumber = field != schemaNode.fields.end() &&
                        (field->second.type == Nubis::NB_FIELD_INTEGER || field->second.type == Nubis::NB_FIELD_DOUBLE);
        columns.push_back({name, isNumber ? Align::RIGHT : Align::LEFT});
    }
    Table table(std::move(columns));
    for (const Nubis::NBRecord &record : records) {
        Nubis::NBFieldMap data;
        record.GetRecordData(data);
        std::vector<std::string> cells = {record.GetRecordId(), std::to_string(record.GetVersion())};
        for (const std::string &name : fieldNames) {
            cells.push_back(FieldToCell(data[name]));
        }
        table.Add(std::move(cells));
    }
    table.Print(console.out, console.outWidth);
}

std::string FieldTypeName(Nubis::NBRecordFieldType type)
{
    static constexpr std::array<const char *, 10> NAMES = {
        "Null", "Integer", "Double", "String", "Boolean", "Blob", "List", "Map", "Asset", "Reference"};
    return type < NAMES.size() ? NAMES[type] : "unknown";
}

} // namespace NubisTool
