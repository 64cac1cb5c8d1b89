// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/json_util.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "records/limits.h"
#include "util/encoding.h"

namespace DriveService {

namespace {

constexpr size_t EXCERPT_BYTES = 80;

std::unique_ptr<Json::CharReader> NewReader()
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder.settings_["stackLimit"] = MAX_JSON_DEPTH;
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

} // namespace

size_t CountJsonValues(const std::string &text)
{
    size_t values = 0;
    bool inText = false;
    for (size_t i = 0; i < text.size() && values <= MAX_JSON_VALUES; ++i) {
        char c = text[i];
        if (inText) {
            i += c == '\\' ? 1 : 0;
            inText = c != '"';
        } else {
            inText = c == '"';
            values += c == ',' || c == '[' || c == '{' ? 1 : 0;
        }
    }
    return values;
}

bool ParseForeignJson(const std::string &text, Json::Value &value, std::string &error)
{
    // Each value takes a byte at least.
    if (text.size() > MAX_JSON_VALUES && CountJsonValues(text) > MAX_JSON_VALUES) {
        error = "the text has more than " + std::to_string(MAX_JSON_VALUES) + " values; send less at a time";
        value = Json::Value();
        return false;
    }
    return ParseJson(text, value, error);
}

bool ParseJson(const std::string &text, Json::Value &value, std::string &error)
{
    if (!IsUtf8(text)) {
        error = "the text is not valid UTF-8";
        return false;
    }
    try {
        // One for each thread: making one costs more than reading a small text.
        static thread_local const std::unique_ptr<Json::CharReader> reader = NewReader();
        if (reader->parse(text.data(), text.data() + text.size(), &value, &error)) {
            return true;
        }
    } catch (const std::exception &failure) {
        error = failure.what();
    }
    std::replace(error.begin(), error.end(), '\n', ' ');
    error.erase(error.find_last_not_of(' ') + 1);
    value = Json::Value();
    return false;
}

std::string DescribeJson(const Json::Value &value)
{
    switch (value.type()) {
        case Json::nullValue:
            return "null";
        case Json::intValue:
        case Json::uintValue:
            return "integer " + value.asString();
        case Json::realValue:
            return "number " + value.asString();
        case Json::stringValue:
            return "text \"" + Excerpt(value.asString()) + "\"";
        case Json::booleanValue:
            return value.asBool() ? "true" : "false";
        case Json::arrayValue:
            return "an array";
        case Json::objectValue:
            return "an object";
    }
    return "an unknown value";
}

std::string Excerpt(const std::string &text)
{
    if (text.size() <= EXCERPT_BYTES) {
        return text;
    }
    size_t end = EXCERPT_BYTES;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end;
    }
    return text.substr(0, end) + "...";
}

std::string TextMember(const Json::Value &value, const char *name, const std::string &missing)
{
    if (!value.isObject() || !value[name].isString()) {
        return missing;
    }
    return value[name].asString();
}

} // namespace DriveService
