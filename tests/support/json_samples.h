// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TEST_JSON_SAMPLES_H
#define NUBIS_TEST_JSON_SAMPLES_H

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <json/json.h>

namespace NubisTest {
// The value of a text that the test itself wrote, so it must be JSON.
inline Json::Value ParseJson(const std::string &text)
{
    std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value json;
    std::string error;
    if (!reader->parse(text.data(), text.data() + text.size(), &json, &error)) {
        throw std::invalid_argument(error);
    }
    return json;
}

// The compact text of a value, of any depth that the stack carries.
inline std::string JsonText(const Json::Value &json)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, json);
}

// Objects and arrays in turn, so many levels deep.
inline Json::Value NestJson(int depth)
{
    Json::Value json = 1;
    for (int i = 0; i < depth; ++i) {
        Json::Value outer;
        if (i % 2 == 0) {
            outer["relations"].swap(json);
        } else {
            outer.append(Json::Value()).swap(json);
        }
        json.swap(outer);
    }
    return json;
}

// One value of every kind that a broken service could put where something else belongs.
inline std::vector<Json::Value> HostileJson()
{
    return {Json::Value(), Json::Value(true), Json::Value(-1), Json::Value(Json::Int64(INT64_MIN)),
        Json::Value(Json::UInt64(UINT64_MAX)), Json::Value(1e300), Json::Value(0.5),
        Json::Value(std::numeric_limits<double>::quiet_NaN()), Json::Value(std::numeric_limits<double>::infinity()),
        Json::Value(""), Json::Value(std::string("a\0b\xff", 4)), Json::Value(Json::arrayValue),
        Json::Value(Json::objectValue), ParseJson(R"([null, 1, "x", [], {}])"), NestJson(900)};
}

// The object once with each of its members replaced by each hostile value.
inline std::vector<Json::Value> SpoilEachMember(const Json::Value &good)
{
    std::vector<Json::Value> spoilt;
    for (const std::string &name : good.getMemberNames()) {
        for (const Json::Value &hostile : HostileJson()) {
            Json::Value json = good;
            json[name] = hostile;
            spoilt.push_back(std::move(json));
        }
    }
    return spoilt;
}
} // namespace NubisTest

#endif // NUBIS_TEST_JSON_SAMPLES_H
