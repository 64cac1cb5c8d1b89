// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "demo_data.h"

#include <charconv>
#include <fstream>
#include <iterator>
#include <set>
#include <utility>

#include <json/json.h>

#include "command_error.h"

namespace NubisTool {
namespace {

constexpr const char *PACKAGE_ADVICE = "install Debian's package iso-codes: apt-get install iso-codes";

constexpr const char *CATALOGUE = R"json({
  "bundleName": "org.example.atlas",
  "appId": "atlas",
  "schemaGroupVersion": 1,
  "enableCloud": 1,
  "switchStatus": 1,
  "defaultContainer": {
    "name": "world",
    "databaseName": "world.db",
    "maxBatchNumber": 500,
    "schema": {
      "version": 1,
      "recordTypes": [
        {"recordType": "Country", "tableName": "country", "fields": [
          {"name": "isoCode", "type": "String", "primary": true, "queryable": true, "sortable": true},
          {"name": "alpha3", "type": "String", "queryable": true},
          {"name": "number", "type": "Integer", "queryable": true, "sortable": true},
          {"name": "name", "type": "String", "queryable": true, "sortable": true, "searchable": true},
          {"name": "officialName", "type": "String", "nullable": true},
          {"name": "flag", "type": "String"}
        ]},
        {"recordType": "Subdivision", "tableName": "subdivision", "fields": [
          {"name": "isoCode", "type": "String", "primary": true, "queryable": true, "sortable": true},
          {"name": "name", "type": "String", "queryable": true, "sortable": true, "searchable": true},
          {"name": "kind", "type": "String", "queryable": true},
          {"name": "country", "type": "Reference", "reference": {"recordType": "Country"}, "queryable": true},
          {"name": "parent", "type": "Reference", "reference": {"recordType": "Subdivision"}, "nullable": true}
        ]},
        {"recordType": "Language", "tableName": "language", "fields": [
          {"name": "isoCode", "type": "String", "primary": true, "queryable": true, "sortable": true},
          {"name": "name", "type": "String", "queryable": true, "sortable": true, "searchable": true},
          {"name": "names", "type": "List", "listType": "String"},
          {"name": "isLiving", "type": "Boolean", "queryable": true},
          {"name": "iso639", "type": "Map"}
        ]}
      ]
    }
  }
}
)json";

// The objects under the one member of an iso-codes file.
Json::Value LoadList(const std::string &path, const std::string &member)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw CommandError("the demo's data is not there: " + path, PACKAGE_ADVICE);
    }
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    Json::Value root;
    std::string error;
    if (!ParseJsonText(text, root, error) || !root.isObject() || !root[member].isArray()) {
        throw CommandError(
            path + " is not the list that was expected" + (error.empty() ? "" : ": " + error), PACKAGE_ADVICE);
    }
    return std::move(root[member]);
}

std::string Text(const Json::Value &entry, const char *member)
{
    const Json::Value &value = entry[member];
    return value.isString() ? value.asString() : "";
}

void SetIfThere(Json::Value &row, const char *field, const std::string &text)
{
    if (!text.empty()) {
        row[field] = text;
    }
}

Json::Value CountryRow(const Json::Value &entry)
{
    Json::Value row(Json::objectValue);
    row["isoCode"] = entry["alpha_2"];
    row["alpha3"] = entry["alpha_3"];
    std::string digits = Text(entry, "numeric");
    int number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    row["number"] = number;
    row["name"] = entry["name"];
    row["flag"] = entry["flag"];
    SetIfThere(row, "officialName", Text(entry, "official_name"));
    return row;
}

Json::Value SubdivisionRow(const Json::Value &entry, const std::set<std::string> &codes)
{
    Json::Value row(Json::objectValue);
    std::string code = Text(entry, "code");
    std::string country = code.substr(0, code.find('-'));
    row["isoCode"] = code;
    row["name"] = entry["name"];
    row["kind"] = entry["type"];
    row["country"] = country;
    // The list names parents with and without their country.
    std::string parent = Text(entry, "parent");
    SetIfThere(row, "parent", parent.empty() || codes.count(parent) != 0 ? parent : country + "-" + parent);
    return row;
}

Json::Value LanguageRow(const Json::Value &entry)
{
    Json::Value row(Json::objectValue);
    row["isoCode"] = entry["alpha_3"];
    row["name"] = entry["name"];
    row["names"] = Json::Value(Json::arrayValue);
    for (const char *member : {"name", "inverted_name", "common_name"}) {
        if (std::string name = Text(entry, member); !name.empty()) {
            row["names"].append(name);
        }
    }
    row["isLiving"] = Text(entry, "type") == "L";
    for (const char *member : {"scope", "type", "alpha_2", "bibliographic"}) {
        SetIfThere(row["iso639"], member, Text(entry, member));
    }
    return row;
}

template <typename MakeRow>
DemoTable MakeTable(const std::string &recordType, const std::string &file, const Json::Value &list, MakeRow makeRow)
{
    DemoTable table{recordType, "isoCode", {}};
    size_t number = 0;
    for (const Json::Value &entry : list) {
        table.rows.push_back(
            {file, ++number, entry.isObject() ? makeRow(entry) : Json::Value(Json::objectValue), false});
    }
    return table;
}

} // namespace

std::vector<DemoTable> LoadDemoData(const std::string &folder)
{
    std::string countryFile = folder + "/iso_3166-1.json";
    std::string subdivisionFile = folder + "/iso_3166-2.json";
    std::string languageFile = folder + "/iso_639-3.json";
    Json::Value subdivisions = LoadList(subdivisionFile, "3166-2");
    std::set<std::string> codes;
    for (const Json::Value &entry : subdivisions) {
        if (entry.isObject()) {
            codes.insert(Text(entry, "code"));
        }
    }
    std::vector<DemoTable> tables;
    tables.push_back(MakeTable("Country", countryFile, LoadList(countryFile, "3166-1"), CountryRow));
    tables.push_back(MakeTable("Subdivision", subdivisionFile, subdivisions,
        [&codes](const Json::Value &entry) { return SubdivisionRow(entry, codes); }));
    tables.push_back(MakeTable("Language", languageFile, LoadList(languageFile, "639-3"), LanguageRow));
    return tables;
}

std::string DemoCatalogue()
{
    return CATALOGUE;
}

} // namespace NubisTool
