// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/json_writer.h"

#include <cmath>
#include <cstdlib>
#include <new>
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

// The writer itself does not look whether it gets memory for its levels.
class ThrowingAllocator {
public:
    void *Malloc(size_t size)
    {
        return Realloc(nullptr, 0, size);
    }
    void *Realloc(void *memory, size_t, size_t size)
    {
        void *moved = size > 0 ? std::realloc(memory, size) : nullptr;
        if (moved == nullptr) {
            throw std::bad_alloc();
        }
        return moved;
    }
    static void Free(void *memory)
    {
        std::free(memory);
    }
};

using Writer = rapidjson::Writer<TextStream, rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingAllocator>;

void WriteValue(Writer &writer, const Json::Value &value);

void WriteMembers(Writer &writer, const Json::Value &object)
{
    for (auto member = object.begin(); member != object.end(); ++member) {
        const char *end = nullptr;
        const char *name = member.memberName(&end);
        writer.Key(name, static_cast<rapidjson::SizeType>(end - name));
        WriteValue(writer, *member);
    }
}

void WriteText(Writer &writer, const Json::Value &value)
{
    const char *begin = nullptr;
    const char *end = nullptr;
    value.getString(&begin, &end);
    writer.String(begin, static_cast<rapidjson::SizeType>(end - begin));
}

void WriteReal(Writer &writer, double value)
{
    // JSON has no other numbers.
    if (std::isfinite(value)) {
        writer.Double(value);
    } else {
        writer.Null();
    }
}

void WriteValue(Writer &writer, const Json::Value &value)
{
    switch (value.type()) {
        case Json::nullValue:
            writer.Null();
            break;
        case Json::intValue:
            writer.Int64(value.asInt64());
            break;
        case Json::uintValue:
            writer.Uint64(value.asUInt64());
            break;
        case Json::realValue:
            WriteReal(writer, value.asDouble());
            break;
        case Json::stringValue:
            WriteText(writer, value);
            break;
        case Json::booleanValue:
            writer.Bool(value.asBool());
            break;
        case Json::arrayValue:
            writer.StartArray();
            for (const Json::Value &element : value) {
                WriteValue(writer, element);
            }
            writer.EndArray();
            break;
        case Json::objectValue:
            writer.StartObject();
            WriteMembers(writer, value);
            writer.EndObject();
            break;
    }
}

} // namespace

std::string WriteJson(const Json::Value &value)
{
    std::string text;
    TextStream stream{text};
    Writer writer(stream);
    WriteValue(writer, value);
    return text;
}

std::string WriteJson(const Json::Value &object, const std::vector<WrittenMember> &more)
{
    std::string text;
    TextStream stream{text};
    Writer writer(stream);
    writer.StartObject();
    WriteMembers(writer, object);
    for (const WrittenMember &member : more) {
        writer.Key(member.name);
        // The writer would copy it character by character; it adds what stands before a value.
        writer.RawValue("", 0, rapidjson::kObjectType);
        text += member.text;
    }
    writer.EndObject();
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
