// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "json_helper.h"

#include <exception>
#include <memory>
#include <ostream>
#include <streambuf>
#include <utility>

#include <json/reader.h>
#include <json/writer.h>

namespace Nubis {
namespace {
// True once the thread's own reader and writer are gone, while it ends. No object, so that it can be asked even then.
thread_local bool g_isEnding = false;

std::unique_ptr<Json::CharReader> NewReader()
{
    return std::unique_ptr<Json::CharReader>(Json::CharReaderBuilder().newCharReader());
}

std::unique_ptr<Json::StreamWriter> NewWriter()
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return std::unique_ptr<Json::StreamWriter>(builder.newStreamWriter());
}

// A thread's own, because making them costs more than a small text. Nothing that waits happens while one is in use, so a
// task stays on its thread meanwhile.
struct ReaderAndWriter {
    ReaderAndWriter() = default;
    ~ReaderAndWriter()
    {
        g_isEnding = true;
    }
    ReaderAndWriter(const ReaderAndWriter &) = delete;
    ReaderAndWriter &operator=(const ReaderAndWriter &) = delete;

    const std::unique_ptr<Json::CharReader> reader = NewReader();
    const std::unique_ptr<Json::StreamWriter> writer = NewWriter();
};

// use(reader and writer), also in what runs when the thread has let go of its own.
template <typename Use>
void WithReaderAndWriter(Use &&use)
{
    if (g_isEnding) {
        const ReaderAndWriter fresh;
        use(fresh);
        return;
    }
    static thread_local const ReaderAndWriter own;
    use(own);
}

// Takes what a writer writes without the copies of a string stream.
class TextBuffer : public std::streambuf {
public:
    std::string TakeText()
    {
        return std::move(text_);
    }

protected:
    int_type overflow(int_type character) override
    {
        if (!traits_type::eq_int_type(character, traits_type::eof())) {
            text_ += traits_type::to_char_type(character);
        }
        return traits_type::not_eof(character);
    }
    std::streamsize xsputn(const char *text, std::streamsize size) override
    {
        text_.append(text, static_cast<size_t>(size));
        return size;
    }

private:
    std::string text_;
};
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
    return StringOf(FindMember(json, key), defaultValue);
}

std::string JsonHelper::StringOf(const Json::Value *member, const std::string &defaultValue)
{
    return member != nullptr && member->isString() ? member->asString() : defaultValue;
}

int32_t JsonHelper::GetIntFromJson(const Json::Value &json, const std::string &key, int32_t defaultValue)
{
    return IntOf(FindMember(json, key), defaultValue);
}

int32_t JsonHelper::IntOf(const Json::Value *member, int32_t defaultValue)
{
    return member != nullptr && member->isInt() ? member->asInt() : defaultValue;
}

uint32_t JsonHelper::GetUIntFromJson(const Json::Value &json, const std::string &key, uint32_t defaultValue)
{
    return UIntOf(FindMember(json, key), defaultValue);
}

uint32_t JsonHelper::UIntOf(const Json::Value *member, uint32_t defaultValue)
{
    return member != nullptr && member->isUInt() ? member->asUInt() : defaultValue;
}

int64_t JsonHelper::GetInt64FromJson(const Json::Value &json, const std::string &key, int64_t defaultValue)
{
    return Int64Of(FindMember(json, key), defaultValue);
}

int64_t JsonHelper::Int64Of(const Json::Value *member, int64_t defaultValue)
{
    return member != nullptr && member->isInt64() ? member->asInt64() : defaultValue;
}

uint64_t JsonHelper::GetUInt64FromJson(const Json::Value &json, const std::string &key, uint64_t defaultValue)
{
    return UInt64Of(FindMember(json, key), defaultValue);
}

uint64_t JsonHelper::UInt64Of(const Json::Value *member, uint64_t defaultValue)
{
    return member != nullptr && member->isUInt64() ? member->asUInt64() : defaultValue;
}

bool JsonHelper::GetBoolFromJson(const Json::Value &json, const std::string &key, bool defaultValue)
{
    return BoolOf(FindMember(json, key), defaultValue);
}

bool JsonHelper::BoolOf(const Json::Value *member, bool defaultValue)
{
    return member != nullptr && member->isBool() ? member->asBool() : defaultValue;
}

std::string JsonHelper::JsonToString(const Json::Value &json)
{
    try {
        TextBuffer buffer;
        std::ostream stream(&buffer);
        WithReaderAndWriter([&](const ReaderAndWriter &with) { with.writer->write(json, &stream); });
        return buffer.TakeText();
    } catch (const std::exception &) {
        return "";
    }
}

Json::Value JsonHelper::StringToJson(const std::string &text)
{
    Json::Value json;
    try {
        WithReaderAndWriter([&](const ReaderAndWriter &with) {
            with.reader->parse(text.data(), text.data() + text.size(), &json, nullptr);
        });
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
