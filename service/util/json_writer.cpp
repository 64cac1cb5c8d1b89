// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Writes the texts that JsonCpp's own writer would, in one walk: that one copies and looks up each member's name.

#include <charconv>
#include <cstdint>

#include "util/json_util.h"

namespace DriveService {

namespace {

constexpr unsigned char FIRST_PRINTABLE = 0x20;

bool IsPlain(char c)
{
    return static_cast<unsigned char>(c) >= FIRST_PRINTABLE && c != '"' && c != '\\';
}

void AppendEscaped(std::string &text, char c)
{
    constexpr const char *digits = "0123456789abcdef";
    constexpr unsigned bitsOfDigit = 4;
    constexpr unsigned lastDigit = 0xF;
    switch (c) {
        case '"':
            text += "\\\"";
            return;
        case '\\':
            text += "\\\\";
            return;
        case '\b':
            text += "\\b";
            return;
        case '\f':
            text += "\\f";
            return;
        case '\n':
            text += "\\n";
            return;
        case '\r':
            text += "\\r";
            return;
        case '\t':
            text += "\\t";
            return;
        default: {
            unsigned code = static_cast<unsigned char>(c);
            text += "\\u00";
            text += digits[code >> bitsOfDigit];
            text += digits[code & lastDigit];
        }
    }
}

// Replies of up to 128 MiB are written; escaping every character outside ASCII would triple some of them.
void AppendQuoted(std::string &text, const char *begin, const char *end)
{
    text += '"';
    for (const char *at = begin; at != end;) {
        const char *stop = at;
        while (stop != end && IsPlain(*stop)) {
            ++stop;
        }
        text.append(at, stop);
        if (stop != end) {
            AppendEscaped(text, *stop);
            ++stop;
        }
        at = stop;
    }
    text += '"';
}

template <typename Number>
void AppendInteger(std::string &text, Number number)
{
    char digits[24];
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr);
}

void Append(std::string &text, const Json::Value &value);

void AppendArray(std::string &text, const Json::Value &array)
{
    char separator = '[';
    // NOLINTNEXTLINE(modernize-loop-convert): an array may have gaps, which its iterators leave out
    for (Json::ArrayIndex i = 0; i < array.size(); ++i) {
        text += separator;
        Append(text, array[i]);
        separator = ',';
    }
    text += separator == '[' ? "[]" : "]";
}

void AppendObject(std::string &text, const Json::Value &object)
{
    char separator = '{';
    for (auto member = object.begin(); member != object.end(); ++member) {
        text += separator;
        const char *nameEnd = nullptr;
        const char *name = member.memberName(&nameEnd);
        AppendQuoted(text, name, nameEnd);
        text += ':';
        Append(text, *member);
        separator = ',';
    }
    text += separator == '{' ? "{}" : "}";
}

void Append(std::string &text, const Json::Value &value)
{
    switch (value.type()) {
        case Json::nullValue:
            text += "null";
            break;
        case Json::intValue:
            AppendInteger(text, value.asLargestInt());
            break;
        case Json::uintValue:
            AppendInteger(text, value.asLargestUInt());
            break;
        case Json::realValue:
            text += Json::valueToString(value.asDouble());
            break;
        case Json::stringValue: {
            const char *begin = nullptr;
            const char *end = nullptr;
            if (value.getString(&begin, &end)) {
                AppendQuoted(text, begin, end);
            } else {
                text += R"("")";
            }
            break;
        }
        case Json::booleanValue:
            text += value.asBool() ? "true" : "false";
            break;
        case Json::arrayValue:
            AppendArray(text, value);
            break;
        case Json::objectValue:
            AppendObject(text, value);
            break;
    }
}

} // namespace

std::string WriteJson(const Json::Value &value)
{
    std::string text;
    Append(text, value);
    return text;
}

} // namespace DriveService
