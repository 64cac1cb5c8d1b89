// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "row_checker.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "command_error.h"
#include "error_text.h"
#include "field_converter.h"
#include "record_json.h"

namespace NubisTool {
namespace {

constexpr size_t LONGEST_FOUND = 60;
// Enough to see what is wrong with a file; the count says how many there are.
constexpr size_t MOST_PROBLEMS_SHOWN = 50;

std::string Shown(const Json::Value &value)
{
    std::string text = CompactText(value);
    return text.size() <= LONGEST_FOUND ? text : text.substr(0, LONGEST_FOUND) + "...";
}

std::string FieldNames(const Nubis::NBSchemaNode &schemaNode)
{
    std::string names;
    for (const auto &[name, field] : schemaNode.fields) {
        names += (names.empty() ? "" : ", ") + name;
    }
    return names;
}

std::string Place(const ImportItem &item)
{
    return item.file + ":" + std::to_string(item.line);
}

} // namespace

std::string ProblemText(const RowProblem &problem)
{
    return problem.file + ":" + std::to_string(problem.line) + ": " +
           (problem.field.empty() ? "" : "field " + problem.field + ": ") + "expected " + problem.expected +
           ", found " + problem.found;
}

void ThrowIfAny(const std::vector<RowProblem> &problems, const std::string &bundle)
{
    if (problems.empty()) {
        return;
    }
    std::string text = CountText(problems.size(), "problem") + " in the input; nothing was sent:";
    for (size_t i = 0; i < std::min(problems.size(), MOST_PROBLEMS_SHOWN); ++i) {
        text += "\n  " + ProblemText(problems[i]);
    }
    if (problems.size() > MOST_PROBLEMS_SHOWN) {
        text += "\n  ... and " + std::to_string(problems.size() - MOST_PROBLEMS_SHOWN) + " more";
    }
    throw CommandError(text, "correct the input; `nubis catalogue show " + bundle + "` lists types and fields");
}

bool DescribesRecord(const std::string &member)
{
    static const std::set<std::string> NAMES = {
        "recordId", "recordType", "version", "deleted", "created", "modified", "shared", "relations", "fields"};
    return NAMES.count(member) != 0;
}

// What checking one row needs at hand.
class RowChecker::Pass {
public:
    Pass(const RowChecker &checker, const Row &row, std::vector<RowProblem> &problems)
        : checker_(checker), row_(row), problems_(problems),
          nested_(!row.isText && row.values["fields"].isObject() && checker.schemaNode_.fields.count("fields") == 0),
          fields_(nested_ ? row.values["fields"] : row.values)
    {}

    bool Run(ImportItem &item)
    {
        size_t before = problems_.size();
        Nubis::NBFieldMap data;
        for (const std::string &name : fields_.getMemberNames()) {
            CheckMember(name, data);
        }
        CheckMissing(data);
        CheckType();
        item.file = row_.file;
        item.line = row_.line;
        item.record.SetRecordType(checker_.schemaNode_.recordType);
        item.record.SetRecordId(ReadId());
        item.record.SetRecordData(std::move(data));
        return problems_.size() == before;
    }

private:
    void Report(const std::string &field, const std::string &expected, const std::string &found)
    {
        problems_.push_back({row_.file, row_.line, field, expected, found});
    }

    void CheckMember(const std::string &name, Nubis::NBFieldMap &data)
    {
        auto schemaField = checker_.schemaNode_.fields.find(name);
        if (schemaField == checker_.schemaNode_.fields.end()) {
            if (nested_ || !DescribesRecord(name)) {
                Report(name,
                    "a field of " + checker_.schemaNode_.recordType + " (" + FieldNames(checker_.schemaNode_) + ")",
                    "this name");
            }
            return;
        }
        const Json::Value &value = fields_[name];
        if (value.isNull()) {
            // A change may take a value away by an explicit null; in a whole record leaving it out means the same.
            if (checker_.completeness_ == Completeness::PARTIAL && schemaField->second.nullable) {
                data[name] = Nubis::NBRecordField();
            } else if (checker_.completeness_ == Completeness::PARTIAL) {
                Report(name, "a value", "null");
            }
            return;
        }
        Nubis::NBRecordField field;
        std::string expected;
        if (ConvertField(schemaField->second, value, row_.isText, field, expected)) {
            data[name] = std::move(field);
        } else {
            Report(name, expected, Shown(value));
        }
    }

    void CheckMissing(const Nubis::NBFieldMap &data)
    {
        if (checker_.completeness_ == Completeness::PARTIAL) {
            return;
        }
        for (const auto &[name, schemaField] : checker_.schemaNode_.fields) {
            if (!schemaField.primary && schemaField.nullable) {
                continue;
            }
            auto value = data.find(name);
            std::string reason = schemaField.primary ? "primary" : "not nullable";
            if (value == data.end() && fields_[name].isNull()) {
                Report(name, "a value because the field is " + reason, "none");
            } else if (value != data.end() && value->second.ToJsonValue().isNull()) {
                Report(name, "a value because the field is " + reason, "an empty one, which is sent as none");
            }
        }
    }

    void CheckType()
    {
        const Json::Value &type = row_.values["recordType"];
        bool isField = checker_.schemaNode_.fields.count("recordType") != 0;
        if (!isField && !type.isNull() && type != Json::Value(checker_.schemaNode_.recordType)) {
            Report("recordType", checker_.schemaNode_.recordType, Shown(type));
        }
    }

    std::string ReadId()
    {
        bool named = !checker_.idField_.empty();
        const std::string name = named ? checker_.idField_ : "recordId";
        const Json::Value &id = named ? fields_[name] : row_.values[name];
        if (id.isString() && !id.asString().empty()) {
            return id.asString();
        }
        if (id.isInt64()) {
            return std::to_string(id.asInt64());
        }
        if (id.isUInt64()) {
            return std::to_string(id.asUInt64());
        }
        if (named || !id.isNull()) {
            Report(name, "a text or a whole number as the record's id", id.isNull() ? "none" : Shown(id));
        }
        return "";
    }

    const RowChecker &checker_;
    const Row &row_;
    std::vector<RowProblem> &problems_;
    bool nested_;
    const Json::Value &fields_;
};

RowChecker::RowChecker(const Nubis::NBSchemaNode &schemaNode, std::string idField, Completeness completeness)
    : schemaNode_(schemaNode), idField_(std::move(idField)), completeness_(completeness)
{
    if (!idField_.empty() && schemaNode_.fields.count(idField_) == 0) {
        throw CommandError("record type " + schemaNode_.recordType + " has no field \"" + idField_ + "\"",
            "name one of its fields with --id-field: " + FieldNames(schemaNode_));
    }
}

bool RowChecker::Check(const Row &row, ImportItem &item, std::vector<RowProblem> &problems) const
{
    return Pass(*this, row, problems).Run(item);
}

std::vector<ImportItem> CheckRows(
    const RowChecker &checker, const std::vector<Row> &rows, std::vector<RowProblem> &problems)
{
    std::vector<ImportItem> items;
    items.reserve(rows.size());
    std::map<std::string, std::string> placeOfId;
    for (const Row &row : rows) {
        ImportItem item;
        if (!checker.Check(row, item, problems)) {
            continue;
        }
        std::string id = item.record.GetRecordId();
        if (!id.empty()) {
            auto [other, isNew] = placeOfId.emplace(id, Place(item));
            if (!isNew) {
                problems.push_back({row.file, row.line, "", "a record id of its own",
                    "\"" + id + "\", which " + other->second + " has already"});
                continue;
            }
        }
        items.push_back(std::move(item));
    }
    return items;
}

} // namespace NubisTool
