// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "catalogue/catalogue_types.h"

#include <algorithm>
#include <utility>

namespace DriveService {

namespace {

// The first word of a type is the one that messages use.
constexpr std::pair<const char *, FieldType> TYPE_WORDS[] = {
    {"Null", FieldType::NOTHING},
    {"Integer", FieldType::INTEGER},
    {"Long", FieldType::INTEGER},
    {"Double", FieldType::DOUBLE},
    {"String", FieldType::STRING},
    {"Boolean", FieldType::BOOLEAN},
    {"Blob", FieldType::BLOB},
    {"List", FieldType::LIST},
    {"Map", FieldType::MAP},
    {"Asset", FieldType::ASSET},
    {"Reference", FieldType::REFERENCE},
};

template <typename Map>
const typename Map::mapped_type *FindIn(const Map &map, const std::string &key)
{
    auto found = map.find(key);
    return found == map.end() ? nullptr : &found->second;
}

} // namespace

std::optional<FieldType> FieldTypeOf(const std::string &word)
{
    for (const auto &[known, type] : TYPE_WORDS) {
        if (word == known) {
            return type;
        }
    }
    return std::nullopt;
}

const char *WordOf(FieldType type)
{
    for (const auto &[word, known] : TYPE_WORDS) {
        if (known == type) {
            return word;
        }
    }
    return "Null";
}

std::string AllFieldTypeWords()
{
    std::string text;
    for (const auto &[word, type] : TYPE_WORDS) {
        text += (text.empty() ? "\"" : ", \"") + std::string(word) + "\"";
    }
    return text;
}

const FieldRule *RecordTypeRule::FindField(const std::string &name) const
{
    return FindIn(fields, name);
}

const RelationRule *RecordTypeRule::FindRelation(const std::string &name) const
{
    auto found = std::find_if(
        relations.begin(), relations.end(), [&name](const RelationRule &rule) { return rule.relationName == name; });
    return found == relations.end() ? nullptr : &*found;
}

const RecordTypeRule *ContainerEntry::FindType(const std::string &recordType) const
{
    return FindIn(recordTypes, recordType);
}

const ContainerEntry *AppEntry::FindContainer(const std::string &containerName) const
{
    if (defaultContainer.name == containerName) {
        return &defaultContainer;
    }
    auto found = std::find_if(sharedContainers.begin(), sharedContainers.end(),
        [&containerName](const ContainerEntry &container) { return container.name == containerName; });
    return found == sharedContainers.end() ? nullptr : &*found;
}

} // namespace DriveService
