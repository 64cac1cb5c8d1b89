// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "json_helper.h"

#include <exception>
#include <memory>

#include <json/reader.h>
#include <json/writer.h>

namespace Nubis {
namespace {
// Made once: a fresh builder costs more than parsing a small text. Both are only read afterwards.
const Json::StreamWriterBuilder &GetWriterBuilder()
{
    static const Json::StreamWriterBuilder *builder = [] {
        auto *made = new Json::StreamWriterBuilder;
        (*made)["indentation"] = "";
        return made;
    }();
    return *builder;
}

const Json::CharReaderBuilder &GetReaderBuilder()
{
    static const Json::CharReaderBuilder *builder = new Json::CharReaderBuilder;
    return *builder;
}
} // namespace

const Json::Value *JsonHelper::FindMember(const Json::Value &json, const std::string &key)
{
    if (!json.isObject()) {
        return nullptr;
    }
    return json.find(key.data(), key.data() + key.size());
}

bool JsonHelper::HasMember(const Json::Value &json, const std::string &key)
{
    return FindMember(json, key) != nullptr;
}

std::string JsonHelper::GetStringFromJson(
    const Json::Value &json, const std::string &key, const std::string &defaultValue)
{
    const Json::Value *member = FindMember(json, key);
    return member != nullptr && member->isString() ? member->asString() : defaultValue;
}

int32_t JsonHelper::GetIntFromJson(const Json::Value &json, const std::string &key, int32_t defaultValue)
{
    const Json::Value *member = FindMember(json, key);
    return member != nullptr && member->isInt() ? member->asInt() : defaultValue;
}

uint32_t JsonHelper::GetUIntFromJson(const Json::Value &json, const std::string &key, uint32_t defaultValue)
{
    const Json::Value *member = FindMember(json, key);
    return member != nullptr && member->isUInt() ? member->asUInt() : defaultValue;
}

int64_t JsonHelper::GetInt64FromJson(const Json::Value &json, const std::string &key, int64_t defaultValue)
{
    const Json::Value *member = FindMember(json, key);
    return member != nullptr && member->isInt64() ? member->asInt64() : defaultValue;
}

uint64_t JsonHelper::GetUInt64FromJson(const Json::Value &json, const std::string &key, uint64_t defaultValue)
{
    const Json::Value *member = FindMember(json, key);
    return member != nullptr && member->isUInt64() ? member->asUInt64() : defaultValue;
}

bool JsonHelper::GetBoolFromJson(const Json::Value &json, const std::string &key, bool defaultValue)
{
    const Json::Value *member = FindMember(json, key);
    return member != nullptr && member->isBool() ? member->asBool() : defaultValue;
}

std::string JsonHelper::JsonToString(const Json::Value &json)
{
    try {
        return Json::writeString(GetWriterBuilder(), json);
    } catch (const std::exception &) {
        return "";
    }
}

Json::Value JsonHelper::StringToJson(const std::string &text)
{
    Json::Value json;
    try {
        std::unique_ptr<Json::CharReader> reader(GetReaderBuilder().newCharReader());
        reader->parse(text.data(), text.data() + text.size(), &json, nullptr);
    } catch (const std::exception &) {
        // Nested too deep: what was built so far stands, as after any other text that does not parse.
    }
    return json;
}

std::string JsonHelper::JsonArrayToString(const Json::Value &json, const std::string &separator)
{
    std::string text;
    if (!json.isArray()) {
        return text;
    }
    for (Json::ArrayIndex i = 0; i < json.size(); ++i) {
        const Json::Value &element = json[i];
        if (!element.isString()) {
            continue;
        }
        text += element.asString();
        if (i + 1 != json.size()) {
            text += separator;
        }
    }
    return text;
}
} // namespace Nubis
