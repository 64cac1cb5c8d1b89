// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "local_store.h"

#include <fstream>
#include <set>
#include <utility>

#include "command_error.h"
#include "record_json.h"
#include "row_reader.h"

namespace NubisTool {
namespace {

// The service keeps no value for a field that was sent as null, and an empty list or map is sent as null.
bool IsNoValue(const Json::Value &value)
{
    return value.isNull() || ((value.isArray() || value.isObject()) && value.empty());
}

class Comparison {
public:
    Comparison(std::string firstName, std::string secondName)
        : firstName_(std::move(firstName)), secondName_(std::move(secondName))
    {}

    void Record(const std::string &id, const LocalStore::Entry *first, const LocalStore::Entry *second)
    {
        ++difference_.records;
        if (first == nullptr || second == nullptr) {
            difference_.lines.push_back(id + ": only " + (first == nullptr ? secondName_ : firstName_) + " has it");
            return;
        }
        Value(id, "record type", first->recordType, second->recordType);
        Value(id, "version", Json::UInt64(first->version), Json::UInt64(second->version));
        std::set<std::string> names;
        for (const Json::Value *fields : {&first->fields, &second->fields}) {
            for (const std::string &name : fields->getMemberNames()) {
                names.insert(name);
            }
        }
        for (const std::string &name : names) {
            ++difference_.fields;
            Value(id, name, first->fields[name], second->fields[name]);
        }
    }

    StoreDifference Take()
    {
        return std::move(difference_);
    }

private:
    void Value(const std::string &id, const std::string &what, const Json::Value &first, const Json::Value &second)
    {
        if (first != second && !(IsNoValue(first) && IsNoValue(second))) {
            difference_.lines.push_back(id + ": " + what + ": " + firstName_ + " has " + CompactText(first) + ", " +
                                        secondName_ + " has " + CompactText(second));
        }
    }

    std::string firstName_;
    std::string secondName_;
    StoreDifference difference_;
};

} // namespace

LocalStore::Effect LocalStore::Take(const Nubis::NBRecord &record)
{
    if (record.GetIsDelete()) {
        return entries_.erase(record.GetRecordId()) > 0 ? Effect::REMOVED : Effect::NOTHING;
    }
    auto held = entries_.find(record.GetRecordId());
    if (held != entries_.end() && held->second.version >= record.GetVersion()) {
        return Effect::NOTHING;
    }
    Entry entry{record.GetRecordType(), record.GetVersion(), RecordToJson(record)["fields"]};
    return entries_.insert_or_assign(record.GetRecordId(), std::move(entry)).second ? Effect::ADDED : Effect::CHANGED;
}

void LocalStore::Put(const std::string &recordId, Entry entry)
{
    entries_[recordId] = std::move(entry);
}

void LocalStore::Remove(const std::string &recordId)
{
    entries_.erase(recordId);
}

const std::map<std::string, LocalStore::Entry> &LocalStore::Entries() const
{
    return entries_;
}

void LocalStore::Write(const std::string &path) const
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    for (const auto &[id, entry] : entries_) {
        Json::Value json(Json::objectValue);
        json["recordId"] = id;
        json["recordType"] = entry.recordType;
        json["version"] = Json::UInt64(entry.version);
        json["fields"] = entry.fields;
        file << CompactText(json) << '\n';
    }
    file.close();
    if (!file) {
        throw CommandError(path + " could not be written", "check that its disk has room left");
    }
}

LocalStore LocalStore::Read(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw CommandError(path + " could not be read", "run the command again");
    }
    LocalStore store;
    for (Row &row : ReadRows(file, path, RowFormat::JSON)) {
        const Json::Value &json = row.values;
        if (!json["recordId"].isString() || !json["recordType"].isString() || !json["version"].isUInt64() ||
            !json["fields"].isObject()) {
            throw CommandError(
                path + ":" + std::to_string(row.line) + ": not a record of a local store", "run the command again");
        }
        store.Put(
            json["recordId"].asString(), {json["recordType"].asString(), json["version"].asUInt64(), json["fields"]});
    }
    return store;
}

StoreDifference Compare(
    const LocalStore &first, const std::string &firstName, const LocalStore &second, const std::string &secondName)
{
    Comparison comparison(firstName, secondName);
    for (const auto &[id, entry] : first.Entries()) {
        auto other = second.Entries().find(id);
        comparison.Record(id, &entry, other == second.Entries().end() ? nullptr : &other->second);
    }
    for (const auto &[id, entry] : second.Entries()) {
        if (first.Entries().count(id) == 0) {
            comparison.Record(id, nullptr, &entry);
        }
    }
    return comparison.Take();
}

} // namespace NubisTool
