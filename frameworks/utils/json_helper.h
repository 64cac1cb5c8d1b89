// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_JSON_HELPER_H
#define NUBIS_JSON_HELPER_H

#include <cstdint>
#include <string>

#include <json/value.h>

namespace Nubis {
// Reading and writing JSON that comes from elsewhere. Every call accepts every value and none throws; JsonCpp's own
// accessors throw on values of other kinds. Any thread may call.
class JsonHelper {
public:
    // The member, or null when the value is no object or has no such member. It lives as long as the value.
    static const Json::Value *FindMember(const Json::Value &json, const std::string &key);
    static bool HasMember(const Json::Value &json, const std::string &key);

    // The member, or the default when the value is no object, has no such member, or the member is of another kind or
    // out of range. A number without a fraction counts as an integer however it is written.
    // StringOf and the like: the same for a member that was found, null when it was not.
    static std::string GetStringFromJson(
        const Json::Value &json, const std::string &key, const std::string &defaultValue = "");
    static std::string StringOf(const Json::Value *member, const std::string &defaultValue = "");
    static int32_t GetIntFromJson(const Json::Value &json, const std::string &key, int32_t defaultValue = 0);
    static int32_t IntOf(const Json::Value *member, int32_t defaultValue = 0);
    static uint32_t GetUIntFromJson(const Json::Value &json, const std::string &key, uint32_t defaultValue = 0);
    static uint32_t UIntOf(const Json::Value *member, uint32_t defaultValue = 0);
    static int64_t GetInt64FromJson(const Json::Value &json, const std::string &key, int64_t defaultValue = 0);
    static int64_t Int64Of(const Json::Value *member, int64_t defaultValue = 0);
    static uint64_t GetUInt64FromJson(const Json::Value &json, const std::string &key, uint64_t defaultValue = 0);
    static uint64_t UInt64Of(const Json::Value *member, uint64_t defaultValue = 0);
    static bool GetBoolFromJson(const Json::Value &json, const std::string &key, bool defaultValue = false);
    static bool BoolOf(const Json::Value *member, bool defaultValue = false);

    // Compact text in one line.
    static std::string JsonToString(const Json::Value &json);
    // The value of the text; null, or what could be read of it, when the text is not JSON or nested too deep.
    static Json::Value StringToJson(const std::string &text);
    // The texts of the array's strings, each but the last element's followed by the separator; other elements are left
    // out, but a separator that was written before them stays.
    static std::string JsonArrayToString(const Json::Value &json, const std::string &separator);
};
} // namespace Nubis

#endif // NUBIS_JSON_HELPER_H
