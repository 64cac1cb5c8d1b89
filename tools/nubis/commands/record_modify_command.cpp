// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <map>
#include <memory>
#include <ostream>
#include <utility>

#include <json/json.h>

#include "command_error.h"
#include "database_calls.h"
#include "error_text.h"
#include "importer.h"
#include "input_text.h"
#include "record_failures.h"
#include "record_json.h"
#include "record_options.h"
#include "row_reader.h"
#include "row_record.h"
#include "session.h"
#include "table.h"

namespace NubisTool {
namespace {

constexpr const char *FORM_ADVICE =
    R"(give {"save": [{"FIELD": VALUE, ...}, ...], "delete": ["ID", {"recordId": "ID", "version": N}, ...]})";

struct ModifyOptions {
    CommonOptions common;
    std::string type;
    std::string file = "-";
    Nubis::NBSavePolicy policy = Nubis::NB_SAVE_CHANGED_FIELDS;
    bool atomic = false;
};

// What one request is to do.
struct Modification {
    std::vector<ImportItem> saves;
    std::vector<Nubis::NBRecord> deletions;
};

Json::Value ParseDocument(const std::string &text, const std::string &name)
{
    Json::Value document = ParseJsonObject(text, name, FORM_ADVICE, EXIT_OPERATION_FAILED);
    for (const std::string &member : document.getMemberNames()) {
        if ((member != "save" && member != "delete") || !document[member].isArray()) {
            throw CommandError(
                name + ": \"" + member + "\" is not one of the arrays \"save\" and \"delete\"", FORM_ADVICE);
        }
    }
    if (document["save"].empty() && document["delete"].empty()) {
        throw CommandError(name + ": there is nothing to save or to delete", FORM_ADVICE);
    }
    return document;
}

// Makes records of the elements of a document and collects what is wrong with them.
class DocumentReader {
public:
    DocumentReader(Session &session, const ModifyOptions &options, const std::string &text, std::string name)
        : session_(session), options_(options), lines_(text), name_(std::move(name))
    {}

    Modification Read(const Json::Value &document)
    {
        Modification modification;
        for (const Json::Value &element : document["save"]) {
            ReadSave(element, modification.saves);
        }
        placeOfId_.clear();
        for (const Json::Value &element : document["delete"]) {
            ReadDeletion(element, modification.deletions);
        }
        ThrowIfAny(problems_, options_.common.bundle);
        return modification;
    }

private:
    void ReadSave(const Json::Value &element, std::vector<ImportItem> &saves)
    {
        size_t line = LineOf(element);
        if (!element.isObject()) {
            Report(line, "an object with the fields of a record", CompactText(element));
            return;
        }
        const Nubis::NBSchemaNode *schemaNode = TypeOf(element, line);
        if (schemaNode == nullptr) {
            return;
        }
        Row row{name_, line, element, false};
        bool isNew = false;
        if (schemaNode->fields.count("isNew") == 0 && element["isNew"].isBool()) {
            isNew = element["isNew"].asBool();
            row.values.removeMember("isNew");
        }
        ImportItem item;
        if (MakeRecordOfRow(row, {"", isNew, options_.policy}, *schemaNode, item, problems_) &&
            IsFirst(item.record.GetRecordId(), line)) {
            saves.push_back(std::move(item));
        }
    }

    void ReadDeletion(const Json::Value &element, std::vector<Nubis::NBRecord> &deletions)
    {
        size_t line = LineOf(element);
        const Json::Value id = element.isObject() ? element["recordId"] : element;
        if (!id.isString() || id.asString().empty()) {
            Report(line, "a record id, or an object with \"recordId\"", CompactText(element));
            return;
        }
        const Nubis::NBSchemaNode *schemaNode = TypeOf(element, line);
        if (schemaNode == nullptr) {
            return;
        }
        Nubis::NBRecord record;
        record.SetRecordId(id.asString());
        record.SetRecordType(schemaNode->recordType);
        if (element.isObject() && !CheckDeletion(element, line, record)) {
            return;
        }
        if (IsFirst(id.asString(), line)) {
            deletions.push_back(std::move(record));
        }
    }

    // A misspelt member might have been meant to keep the record.
    bool CheckDeletion(const Json::Value &element, size_t line, Nubis::NBRecord &record)
    {
        size_t before = problems_.size();
        for (const std::string &member : element.getMemberNames()) {
            if (!DescribesRecord(member)) {
                Report(line, R"("recordId", "recordType" and "version" of a record to delete)", "\"" + member + "\"");
            }
        }
        SetBaseVersion(element["version"], {name_, line, "version", "", ""}, record, problems_);
        return problems_.size() == before;
    }

    // Null, and a problem is reported, when there is no such type.
    const Nubis::NBSchemaNode *TypeOf(const Json::Value &element, size_t line)
    {
        bool isNamed = element.isObject() && element["recordType"].isString();
        const std::string name = isNamed ? element["recordType"].asString() : options_.type;
        const auto &types = session_.ContainerInfo().schema.recordTypes;
        auto type = types.find(name);
        if (type != types.end()) {
            return &type->second;
        }
        if (name.empty()) {
            Report(line, "\"recordType\", or --type for all that do not have it", "neither");
        } else {
            Report(
                line, "a record type of the container " + session_.ContainerInfo().containerName, "\"" + name + "\"");
        }
        return nullptr;
    }

    // Equal ids would share one result.
    bool IsFirst(const std::string &id, size_t line)
    {
        if (id.empty()) {
            return true;
        }
        auto [other, isFirst] = placeOfId_.emplace(id, line);
        if (!isFirst) {
            Report(line, "a record id of its own",
                "\"" + id + "\", which line " + std::to_string(other->second) + " has already");
        }
        return isFirst;
    }

    size_t LineOf(const Json::Value &element)
    {
        return lines_.LineAt(static_cast<size_t>(element.getOffsetStart()));
    }

    void Report(size_t line, const std::string &expected, const std::string &found)
    {
        problems_.push_back({name_, line, "", expected, found});
    }

    Session &session_;
    const ModifyOptions &options_;
    LineCounter lines_;
    std::string name_;
    std::vector<RowProblem> problems_;
    std::map<std::string, size_t> placeOfId_;
};

// Tells what became of each record, in the order of the input.
class Results {
public:
    void Add(const char *action, const Nubis::NBRecord &asked, const Nubis::NBResultMap &results)
    {
        const std::string id = asked.GetRecordId();
        Nubis::NBError error = ErrorFor(results, {}, id);
        Json::Value entry(Json::objectValue);
        entry["action"] = action;
        entry["recordId"] = id;
        entry["recordType"] = asked.GetRecordType();
        if (error.HasError()) {
            entry["reason"] = ErrorText(error);
            failures_.Add(id, error);
        } else {
            entry["version"] = Json::UInt64(results.at(id).GetRecord().GetVersion());
        }
        entries_.append(std::move(entry));
    }

    int Finish(const ModifyOptions &options, const Console &console) const
    {
        if (options.common.json) {
            console.out << PrettyText(entries_) << '\n';
        } else {
            Table table({{"ACTION"}, {"TYPE"}, {"ID"}, {"VERSION", Align::RIGHT}, {"RESULT"}});
            for (const Json::Value &entry : entries_) {
                table.Add({entry["action"].asString(), entry["recordType"].asString(), entry["recordId"].asString(),
                    entry["version"].asString(), entry.isMember("reason") ? "refused" : "done"});
            }
            table.Print(console.out, console.outWidth);
        }
        failures_.ThrowIfAny(
            options.atomic ? "nothing was done, because not everything could be" : "not everything could be done");
        return EXIT_DONE;
    }

private:
    Json::Value entries_{Json::arrayValue};
    RecordFailures failures_;
};

int Modify(const ModifyOptions &options, const Console &console)
{
    Input input(options.file, console.in);
    const std::string text = ReadAll(input.Stream(), input.Name());
    Json::Value document = ParseDocument(text, input.Name());
    Session session(options.common);
    Modification modification = DocumentReader(session, options, text, input.Name()).Read(document);
    auto database = session.Database();
    // Made here, so that the results can be found by them.
    GiveIds(*database, modification.saves);
    std::vector<Nubis::NBRecord> records;
    for (const ImportItem &item : modification.saves) {
        records.push_back(item.record);
    }
    Async::ModifyResult outcome = Wait(
        Async::ModifyRecords(database, std::move(records), modification.deletions, options.policy, options.atomic));
    ThrowIfError(outcome.error, "changing the records");
    Results results;
    for (const Nubis::NBRecord &deleted : modification.deletions) {
        results.Add("delete", deleted, outcome.deleted);
    }
    for (const ImportItem &item : modification.saves) {
        results.Add("save", item.record, outcome.saved);
    }
    return results.Finish(options, console);
}

} // namespace

void AddModifyCommand(CLI::App &record, Chosen &chosen)
{
    auto options = std::make_shared<ModifyOptions>();
    CLI::App *command = AddCommand(record, "modify",
        "Delete and save records of any types in one request, deletions first. A record to save that has no "
        "\"recordId\", or \"isNew\": true, is created",
        "nubis record modify --bundle com.example.notes --type note --atomic changes.json");
    AddDatabaseOptions(*command, options->common);
    command->add_option("--type", options->type, "Record type of what does not have a \"recordType\" of its own")
        ->type_name("TYPE");
    AddPolicyOption(*command, options->policy);
    command->add_flag("--atomic", options->atomic, "Do all of it or nothing");
    command
        ->add_option("file", options->file,
            R"(JSON: {"save": [record, ...], "delete": [id or {"recordId", "recordType", "version"}, ...]} )"
            "[read from standard input]")
        ->type_name("FILE");
    SetAction(*command, chosen, options, Modify);
}

} // namespace NubisTool
