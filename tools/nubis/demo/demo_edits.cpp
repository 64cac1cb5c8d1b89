// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_edits.h"

#include <array>
#include <map>
#include <set>
#include <utility>

#include <json/json.h>

#include "command_error.h"

namespace NubisTool {
namespace {

// Names of languages in their own scripts.
constexpr std::array<const char *, 25> NEW_NAMES = {"አማርኛ", "العربية", "Հայերեն", "বাংলা", "བོད་སྐད", "Български", "ᏣᎳᎩ",
    "中文", "हिन्दी", "Ελληνικά", "ગુજરાતી", "עברית", "日本語", "ಕನ್ನಡ", "ქართული", "ភាសាខ្មែរ", "한국어", "ລາວ", "മലയാളം",
    "Монгол", "မြန်မာ", "தமிழ்", "తెలుగు", "ไทย", "ትግርኛ"};

void AddReferredIds(const Json::Value &fields, std::set<std::string> &referred)
{
    for (const Json::Value &value : fields) {
        if (value.isObject() && value["recordId"].isString()) {
            referred.insert(value["recordId"].asString());
        }
    }
}

std::vector<std::string> IdsThatNobodyRefersTo(const LocalStore &store)
{
    std::set<std::string> referred;
    for (const auto &[id, entry] : store.Entries()) {
        AddReferredIds(entry.fields, referred);
    }
    std::vector<std::string> ids;
    for (const auto &[id, entry] : store.Entries()) {
        if (referred.count(id) == 0) {
            ids.push_back(id);
        }
    }
    return ids;
}

Json::Value ChangedRow(const LocalStore::Entry &entry)
{
    Json::Value row = entry.fields;
    row["name"] = entry.fields["name"].asString() + " (edited)";
    if (row.isMember("names")) {
        row["names"].append(row["name"]);
    }
    return row;
}

DemoTable NewLanguages(size_t count)
{
    DemoTable table{"Language", "isoCode", {}};
    for (size_t i = 0; i < count; ++i) {
        Json::Value row(Json::objectValue);
        row["isoCode"] = "demo-" + std::to_string(i + 1);
        row["name"] = NEW_NAMES[i % NEW_NAMES.size()];
        row["names"].append(row["name"]);
        row["isLiving"] = true;
        row["iso639"]["scope"] = "I";
        table.rows.push_back({"addition", i + 1, std::move(row), false});
    }
    return table;
}

} // namespace

DemoEdits ChooseEdits(const LocalStore &store, const EditCounts &counts)
{
    std::vector<std::string> ids = IdsThatNobodyRefersTo(store);
    size_t wanted = counts.changes + counts.removals;
    if (wanted == 0 || ids.size() < wanted) {
        throw CommandError("too few records to change " + std::to_string(wanted) + " of them", "");
    }
    DemoEdits edits;
    std::map<std::string, DemoTable> changes;
    for (size_t i = 0; i < wanted; ++i) {
        const std::string &id = ids[i * ids.size() / wanted];
        // Removals are spread among the changes.
        bool isRemoval = (i + 1) * counts.removals / wanted > i * counts.removals / wanted;
        if (isRemoval) {
            edits.removals.push_back(id);
            continue;
        }
        const LocalStore::Entry &entry = store.Entries().at(id);
        DemoTable &table = changes[entry.recordType];
        table.recordType = entry.recordType;
        table.idField = "isoCode";
        table.rows.push_back({"edit", i + 1, ChangedRow(entry), false});
    }
    for (auto &[type, table] : changes) {
        edits.changes.push_back(std::move(table));
    }
    edits.additions.push_back(NewLanguages(counts.additions));
    return edits;
}

} // namespace NubisTool
