// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "notes.h"

#include <cstdint>
#include <memory>
#include <stdexcept>

#include <json/reader.h>
#include <json/writer.h>

namespace NubisBench {
namespace {
// One builder for all: as the library does, so that the floor is not made higher than it is.
const Json::StreamWriterBuilder &WriterBuilder()
{
    static const auto *builder = [] {
        auto *made = new Json::StreamWriterBuilder;
        (*made)["indentation"] = "";
        return made;
    }();
    return *builder;
}

Json::Value FieldsOf(const Note &note)
{
    Json::Value fields(Json::objectValue);
    fields["body"] = note.body;
    fields["done"] = note.isDone;
    fields["edited"] = Json::Int64(note.edited);
    fields["score"] = note.score;
    fields["stars"] = Json::Int64(note.stars);
    Json::Value &tags = fields["tags"];
    for (const std::string &tag : note.tags) {
        tags.append(tag);
    }
    fields["title"] = note.title;
    Json::Value &folder = fields["folder"];
    folder["recordId"] = note.folderId;
    folder["recordType"] = "folder";
    return fields;
}

Json::Value Stamp(const Note &note)
{
    Json::Value stamp(Json::objectValue);
    stamp["appId"] = "notes-1";
    stamp["deviceName"] = "bench";
    stamp["time"] = Json::Int64(note.edited);
    return stamp;
}
} // namespace

std::vector<Note> MakeNotes(size_t count, size_t first)
{
    constexpr int64_t firstTime = 1700000000000;
    std::vector<Note> notes(count);
    size_t i = first;
    for (Note &note : notes) {
        const std::string number = std::to_string(i);
        note.id = "note-" + number + "-4c1b9d7e2f60";
        note.title = "The title of note " + number;
        note.body = "What note " + number + " says: a line of text, then another one, as people write them down.";
        note.stars = static_cast<int64_t>(i % 6);
        note.score = static_cast<double>(i % 1000) / 8;
        note.isDone = i % 2 == 0;
        note.tags = {"home", "work", "tag-" + std::to_string(i % 100)};
        note.folderId = "folder-" + std::to_string(i % 50);
        note.edited = firstTime + static_cast<int64_t>(i);
        ++i;
    }
    return notes;
}

std::vector<Nubis::NBRecord> ToRecords(const std::vector<Note> &notes)
{
    using Nubis::NBRecordField;
    std::vector<Nubis::NBRecord> records;
    records.reserve(notes.size());
    for (const Note &note : notes) {
        Nubis::NBFieldMap fields;
        fields.emplace("title", NBRecordField(note.title));
        fields.emplace("body", NBRecordField(note.body));
        fields.emplace("stars", NBRecordField(note.stars));
        fields.emplace("score", NBRecordField(note.score));
        fields.emplace("done", NBRecordField(note.isDone));
        fields.emplace("edited", NBRecordField(note.edited));
        Nubis::NBFieldList tags(note.tags.begin(), note.tags.end());
        fields.emplace("tags", NBRecordField(tags));
        Nubis::NBReference folder{note.folderId, "folder"};
        fields.emplace("folder", NBRecordField(folder));
        Nubis::NBRecord &record = records.emplace_back();
        record.SetRecordId(note.id);
        record.SetRecordType("note");
        record.SetNewCreate(true);
        record.SetRecordData(std::move(fields));
    }
    return records;
}

Json::Value ToRequestJson(const Note &note)
{
    Json::Value json = FieldsOf(note);
    json["recordId"] = note.id;
    json["recordType"] = "note";
    json["deleted"] = false;
    json["isNew"] = true;
    json["baseVersion"] = Json::UInt64(0);
    return json;
}

Json::Value ToReplyJson(const Note &note)
{
    Json::Value json(Json::objectValue);
    json["code"] = 0;
    json["recordId"] = note.id;
    json["recordType"] = "note";
    json["version"] = 1;
    json["deleted"] = false;
    json["createdTime"] = Json::Int64(note.edited);
    json["editedTime"] = Json::Int64(note.edited);
    json["createInfo"] = Stamp(note);
    json["modifiedInfo"] = Stamp(note);
    json["ownerId"] = "";
    json["isShared"] = false;
    json["relations"] = Json::Value(Json::arrayValue);
    json["record"] = FieldsOf(note);
    return json;
}

std::string SaveReply(const std::vector<Note> &notes)
{
    Json::Value reply(Json::objectValue);
    reply["code"] = 0;
    Json::Value &records = reply["records"] = Json::Value(Json::arrayValue);
    for (const Note &note : notes) {
        records.append(ToReplyJson(note))["localRecordId"] = note.id;
    }
    return WriteJson(reply);
}

std::string FetchReply(const Note &note)
{
    return WriteJson(ToReplyJson(note));
}

std::string ChangesReply(const std::vector<Note> &notes)
{
    Json::Value reply(Json::objectValue);
    reply["code"] = 0;
    reply["newStartCursor"] = "cursor-1";
    Json::Value &records = reply["changes"] = Json::Value(Json::arrayValue);
    for (const Note &note : notes) {
        records.append(ToReplyJson(note));
    }
    return WriteJson(reply);
}

std::string CatalogueReply()
{
    return R"({"code": 0, "appInfo": [{"bundleName": "com.example.notes", "appId": "notes-1", "schemaGroupVersion": 1,
        "defaultContainer": {"name": "main", "schema": {"version": 1, "recordTypes": [
            {"recordType": "folder", "tableName": "folders", "fields": [{"name": "title", "type": "String"}]},
            {"recordType": "note", "tableName": "notes", "fields": [
                {"name": "title", "type": "String"}, {"name": "body", "type": "String"},
                {"name": "stars", "type": "Long"}, {"name": "score", "type": "Double"},
                {"name": "done", "type": "Boolean"}, {"name": "edited", "type": "Long"},
                {"name": "tags", "type": "List", "listType": "String"},
                {"name": "folder", "type": "Reference", "reference": {"recordType": "folder"}}]}]}}}]})";
}

std::string WriteJson(const Json::Value &json)
{
    return Json::writeString(WriterBuilder(), json);
}

Json::Value ParseJson(const std::string &text)
{
    static const auto *builder = new Json::CharReaderBuilder;
    const std::unique_ptr<Json::CharReader> reader(builder->newCharReader());
    Json::Value json;
    if (!reader->parse(text.data(), text.data() + text.size(), &json, nullptr)) {
        throw std::runtime_error("no JSON: " + text.substr(0, 200));
    }
    return json;
}
} // namespace NubisBench
