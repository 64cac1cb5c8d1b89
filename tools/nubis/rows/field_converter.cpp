// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "field_converter.h"

#include <charconv>
#include <cmath>
#include <cstdint>

#include "record_json.h"
#include "row_reader.h"

namespace NubisTool {
namespace {

using Nubis::NBSchemaField;

bool IsUtf8(const std::string &text)
{
    size_t position = 0;
    while (position < text.size()) {
        auto lead = static_cast<unsigned char>(text[position]);
        size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        if ((lead >= 0x80 && lead < 0xC2) || lead > 0xF4 || position + length > text.size()) {
            return false;
        }
        uint32_t codePoint = length == 1 ? lead : lead & (0xFFU >> (length + 1));
        for (size_t i = 1; i < length; ++i) {
            auto byte = static_cast<unsigned char>(text[position + i]);
            if ((byte & 0xC0U) != 0x80U) {
                return false;
            }
            codePoint = (codePoint << 6U) | (byte & 0x3FU);
        }
        bool tooLong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
        if (tooLong || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
            return false;
        }
        position += length;
    }
    return true;
}

bool IsBase64(const std::string &text)
{
    static const std::string ALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    size_t padding = text.find('=') == std::string::npos ? 0 : text.size() - text.find('=');
    return text.size() % 4 == 0 && padding <= 2 &&
           text.find_first_not_of(ALPHABET) == (padding == 0 ? std::string::npos : text.size() - padding) &&
           text.find_first_not_of('=', text.size() - padding) == std::string::npos;
}

template <typename Number>
bool ReadNumber(const std::string &text, Number &number)
{
    const char *end = text.data() + text.size();
    auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

// What a text column holds, as the JSON value that stands for it; the text itself when it cannot be read.
Json::Value ReadText(const NBSchemaField &schemaField, const std::string &text)
{
    switch (schemaField.type) {
        case Nubis::NB_FIELD_INTEGER:
            if (int64_t number = 0; ReadNumber(text, number)) {
                return Json::Value(Json::Int64(number));
            }
            break;
        case Nubis::NB_FIELD_DOUBLE:
            if (double number = 0; ReadNumber(text, number)) {
                return Json::Value(number);
            }
            break;
        case Nubis::NB_FIELD_BOOLEAN:
            if (text == "true" || text == "1") {
                return Json::Value(true);
            }
            if (text == "false" || text == "0") {
                return Json::Value(false);
            }
            break;
        case Nubis::NB_FIELD_LIST:
        case Nubis::NB_FIELD_MAP:
        case Nubis::NB_FIELD_ASSET:
        case Nubis::NB_FIELD_REFERENCE: {
            Json::Value value;
            std::string error;
            bool isJson = schemaField.type != Nubis::NB_FIELD_REFERENCE || (!text.empty() && text[0] == '{');
            if (isJson && ParseJsonText(text, value, error)) {
                return value;
            }
            break;
        }
        default:
            break;
    }
    return Json::Value(text);
}

bool CheckReference(const NBSchemaField &schemaField, Json::Value &value, std::string &expected)
{
    const std::string &type = schemaField.refRecordType;
    expected = "the id of a record" + (type.empty() ? "" : " of type " + type) +
               R"(, as text or as {"recordId", "recordType"})";
    if (value.isString() && !type.empty()) {
        Json::Value reference(Json::objectValue);
        reference["recordId"] = value;
        value = reference;
    }
    if (!value.isObject() || !value["recordId"].isString() || value["recordId"].asString().empty()) {
        return false;
    }
    if (!value.isMember("recordType")) {
        value["recordType"] = type;
    }
    return value["recordType"].isString() && !value["recordType"].asString().empty() &&
           (type.empty() || value["recordType"].asString() == type);
}

bool CheckMap(const Json::Value &value, std::string &expected)
{
    expected = "an object whose values are texts, numbers or booleans";
    if (!value.isObject()) {
        return false;
    }
    for (const Json::Value &member : value) {
        bool isScalar = member.isString() ? IsUtf8(member.asString()) : member.isNumeric() || member.isBool();
        if (!isScalar) {
            return false;
        }
    }
    return true;
}

bool CheckValue(const NBSchemaField &schemaField, Json::Value &value, std::string &expected);

bool CheckList(const NBSchemaField &schemaField, Json::Value &value, std::string &expected)
{
    expected = "a list of " + FieldTypeName(schemaField.listType) + " values";
    if (!value.isArray()) {
        return false;
    }
    NBSchemaField element = schemaField;
    element.type = schemaField.listType;
    Json::ArrayIndex index = 0;
    for (Json::Value &item : value) {
        std::string expectedElement;
        if (!CheckValue(element, item, expectedElement)) {
            expected += "; element " + std::to_string(index) + " must be " + expectedElement;
            return false;
        }
        ++index;
    }
    return true;
}

bool CheckValue(const NBSchemaField &schemaField, Json::Value &value, std::string &expected)
{
    switch (schemaField.type) {
        case Nubis::NB_FIELD_INTEGER:
            expected = "a whole number from -9223372036854775808 to 9223372036854775807";
            return value.isNumeric() && value.isInt64();
        case Nubis::NB_FIELD_DOUBLE:
            expected = "a finite number";
            return value.isNumeric() && std::isfinite(value.asDouble());
        case Nubis::NB_FIELD_STRING:
            expected = "a text in UTF-8";
            return value.isString() && IsUtf8(value.asString());
        case Nubis::NB_FIELD_BOOLEAN:
            expected = "true or false";
            return value.isBool();
        case Nubis::NB_FIELD_BLOB:
            expected = "bytes as Base64 text";
            return value.isString() && IsBase64(value.asString());
        case Nubis::NB_FIELD_LIST:
            return CheckList(schemaField, value, expected);
        case Nubis::NB_FIELD_MAP:
            return CheckMap(value, expected);
        case Nubis::NB_FIELD_ASSET:
            expected = R"(an asset: an object with "uri", "assetName", "sha256", "size" ...)";
            return value.isObject();
        case Nubis::NB_FIELD_REFERENCE:
            return CheckReference(schemaField, value, expected);
        default:
            expected = "nothing: the schema gives the field no type that is known";
            return false;
    }
}

} // namespace

bool ConvertField(const NBSchemaField &schemaField, const Json::Value &value, bool isText, Nubis::NBRecordField &field,
    std::string &expected)
{
    Json::Value read = isText && value.isString() ? ReadText(schemaField, value.asString()) : value;
    return CheckValue(schemaField, read, expected) && field.ParseFromJsonValue(schemaField, read);
}

} // namespace NubisTool
