// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/json_util.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <string_view>
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

// The number that four hexadecimal digits stand for; 0 when they are none.
unsigned EscapedUnit(std::string_view digits)
{
    unsigned unit = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
    return unit;
}

// The reader makes bytes of them that are no UTF-8, or a character that nobody wrote.
bool HasHalfPair(std::string_view text)
{
    constexpr size_t escapeBytes = 6;
    const auto unitAt = [&](size_t position) {
        const bool isEscape = text.substr(position, 2) == "\\u";
        return isEscape ? EscapedUnit(text.substr(position + 2, 4)) : 0;
    };
    for (size_t i = text.find('\\'); i != std::string_view::npos; i = text.find('\\', i)) {
        const unsigned unit = unitAt(i);
        if (unit < 0xD800 || unit > 0xDFFF) {
            i += 2;
            continue;
        }
        const unsigned next = i + escapeBytes < text.size() ? unitAt(i + escapeBytes) : 0;
        if (unit > 0xDBFF || next < 0xDC00 || next > 0xDFFF) {
            return true;
        }
        i += 2 * escapeBytes;
    }
    return false;
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
    if (HasHalfPair(text)) {
        error = "the text has half of a surrogate pair";
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
