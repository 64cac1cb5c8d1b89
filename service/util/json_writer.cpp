// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/json_writer.h"

#include <cmath>
#include <cstring>
#include <utility>

#include <rapidjson/writer.h>

namespace DriveService {

namespace {

// Where the writer puts its characters. Throws when they do not fit into memory.
struct TextStream {
    using Ch = char;

    void Put(char character)
    {
        text.push_back(character);
    }
    void Flush()
    {}

    std::string &text;
};

void WriteValue(TextStream &stream, const Json::Value &value);

// A writer of RapidJSON for a number or a text alone: for arrays and objects it has a stack of its own, and does not look
// whether it gets memory for that.
rapidjson::Writer<TextStream> Scalar(TextStream &stream)
{
    return rapidjson::Writer<TextStream>(stream);
}

void WriteText(TextStream &stream, const char *begin, const char *end)
{
    Scalar(stream).String(begin, static_cast<rapidjson::SizeType>(end - begin));
}

void WriteText(TextStream &stream, const Json::Value &value)
{
    const char *begin = nullptr;
    const char *end = nullptr;
    value.getString(&begin, &end);
    WriteText(stream, begin, end);
}

void WriteReal(TextStream &stream, double value)
{
    // JSON has no other numbers.
    if (std::isfinite(value)) {
        Scalar(stream).Double(value);
    } else {
        Scalar(stream).Null();
    }
}

void WriteArray(TextStream &stream, const Json::Value &array)
{
    const char *separator = "[";
    for (const Json::Value &element : array) {
        stream.text += separator;
        WriteValue(stream, element);
        separator = ",";
    }
    stream.text += array.empty() ? "[]" : "]";
}

void WriteObject(TextStream &stream, const Json::Value &object, const std::vector<WrittenMember> &more)
{
    const char *separator = "{";
    for (auto member = object.begin(); member != object.end(); ++member) {
        const char *end = nullptr;
        const char *name = member.memberName(&end);
        stream.text += separator;
        WriteText(stream, name, end);
        stream.text += ':';
        WriteValue(stream, *member);
        separator = ",";
    }
    for (const WrittenMember &member : more) {
        stream.text += separator;
        WriteText(stream, member.name, member.name + std::strlen(member.name));
        stream.text += ':';
        stream.text += member.text;
        separator = ",";
    }
    stream.text += object.empty() && more.empty() ? "{}" : "}";
}

void WriteValue(TextStream &stream, const Json::Value &value)
{
    switch (value.type()) {
        case Json::nullValue:
            Scalar(stream).Null();
            break;
        case Json::intValue:
            Scalar(stream).Int64(value.asInt64());
            break;
        case Json::uintValue:
            Scalar(stream).Uint64(value.asUInt64());
            break;
        case Json::realValue:
            WriteReal(stream, value.asDouble());
            break;
        case Json::stringValue:
            WriteText(stream, value);
            break;
        case Json::booleanValue:
            Scalar(stream).Bool(value.asBool());
            break;
        case Json::arrayValue:
            WriteArray(stream, value);
            break;
        case Json::objectValue:
            WriteObject(stream, value, {});
            break;
    }
}

} // namespace

std::string WriteJson(const Json::Value &value)
{
    std::string text;
    TextStream stream{text};
    WriteValue(stream, value);
    return text;
}

std::string WriteJson(const Json::Value &object, const std::vector<WrittenMember> &more)
{
    std::string text;
    TextStream stream{text};
    WriteObject(stream, object, more);
    return text;
}

void JsonList::Append(const std::string &text)
{
    text_ += text_.size() > 1 ? "," : "";
    text_ += text;
}

std::string JsonList::Take()
{
    text_ += "]";
    return std::move(text_);
}

} // namespace DriveService
