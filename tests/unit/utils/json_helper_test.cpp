// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "json_helper.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "json_samples.h"

using namespace Nubis;
using NubisTest::HostileJson;
using NubisTest::NestJson;
using NubisTest::ParseJson;

TEST(JsonHelper, ReadsMembersOfTheRightKindOnly)
{
    const Json::Value json = ParseJson(R"({"s": "text", "i": -7, "whole": 3.0, "part": 1.5, "b": true, "n": null,
        "five": "5", "big": 5000000000, "huge": 18446744073709551615})");
    EXPECT_EQ(JsonHelper::GetStringFromJson(json, "s", "d"), "text");
    EXPECT_EQ(JsonHelper::GetStringFromJson(json, "i", "d"), "d");
    EXPECT_EQ(JsonHelper::GetStringFromJson(json, "none", "d"), "d");
    EXPECT_EQ(JsonHelper::GetIntFromJson(json, "i", 1), -7);
    EXPECT_EQ(JsonHelper::GetIntFromJson(json, "whole", 1), 3);
    for (const char *name : {"s", "part", "b", "n", "five", "big", "none"}) {
        EXPECT_EQ(JsonHelper::GetIntFromJson(json, name, 1), 1) << name;
    }
    EXPECT_EQ(JsonHelper::GetUIntFromJson(json, "i", 1U), 1U);
    EXPECT_EQ(JsonHelper::GetInt64FromJson(json, "big"), 5000000000);
    EXPECT_EQ(JsonHelper::GetInt64FromJson(json, "huge", 1), 1);
    EXPECT_EQ(JsonHelper::GetUInt64FromJson(json, "huge"), UINT64_MAX);
    EXPECT_EQ(JsonHelper::GetUInt64FromJson(json, "i", 1), 1U);
    EXPECT_TRUE(JsonHelper::GetBoolFromJson(json, "b"));
    EXPECT_TRUE(JsonHelper::GetBoolFromJson(json, "i", true));
    EXPECT_TRUE(JsonHelper::HasMember(json, "n"));
    EXPECT_FALSE(JsonHelper::HasMember(json, "none"));
}

TEST(JsonHelper, GivesTheDefaultForEveryValueThatIsNoObject)
{
    for (const Json::Value &json : HostileJson()) {
        EXPECT_EQ(JsonHelper::GetStringFromJson(json, "key", "d"), "d");
        EXPECT_EQ(JsonHelper::GetIntFromJson(json, "key", 1), 1);
        EXPECT_EQ(JsonHelper::GetUIntFromJson(json, "key", 1), 1U);
        EXPECT_EQ(JsonHelper::GetInt64FromJson(json, "key", 1), 1);
        EXPECT_EQ(JsonHelper::GetUInt64FromJson(json, "key", 1), 1U);
        EXPECT_TRUE(JsonHelper::GetBoolFromJson(json, "key", true));
        Json::Value outer;
        outer["key"] = json;
        EXPECT_NO_THROW(JsonHelper::GetStringFromJson(outer, "key"));
        EXPECT_NO_THROW(JsonHelper::GetIntFromJson(outer, "key"));
        EXPECT_NO_THROW(JsonHelper::GetUIntFromJson(outer, "key"));
        EXPECT_NO_THROW(JsonHelper::GetInt64FromJson(outer, "key"));
        EXPECT_NO_THROW(JsonHelper::GetUInt64FromJson(outer, "key"));
        EXPECT_NO_THROW(JsonHelper::JsonToString(outer));
    }
}

TEST(JsonHelper, WritesCompactTextAndReadsItBack)
{
    const Json::Value json = ParseJson(R"({ "b" : [1, 2.5, "x"], "a" : {"c": null} })");
    EXPECT_EQ(JsonHelper::JsonToString(json), R"({"a":{"c":null},"b":[1,2.5,"x"]})");
    EXPECT_EQ(JsonHelper::StringToJson(JsonHelper::JsonToString(json)), json);
    EXPECT_EQ(JsonHelper::JsonToString(Json::Value()), "null");
}

TEST(JsonHelper, SurvivesTextThatIsNotJson)
{
    EXPECT_TRUE(JsonHelper::StringToJson("").isNull());
    EXPECT_TRUE(JsonHelper::StringToJson("not json").isNull());
    EXPECT_NO_THROW(JsonHelper::StringToJson("{\"a\": 1e400}"));
    EXPECT_NO_THROW(JsonHelper::StringToJson(std::string(100000, '[')));
    EXPECT_NO_THROW(JsonHelper::StringToJson(JsonHelper::JsonToString(NestJson(1500))));
    const Json::Value deepest = NestJson(900);
    EXPECT_EQ(JsonHelper::StringToJson(JsonHelper::JsonToString(deepest)), deepest);
}

RC_GTEST_PROP(JsonHelper, NeverThrowsOnAnyText, (const std::vector<uint8_t> &bytes))
{
    const std::string pieces = "{}[]\",:0123456789.eE+-\\untrfalse ";
    std::string text;
    for (uint8_t byte : bytes) {
        text += byte < 224 ? pieces[byte % pieces.size()] : static_cast<char>(byte);
    }
    const Json::Value json = JsonHelper::StringToJson(text);
    RC_ASSERT(!JsonHelper::JsonToString(json).empty());
}

TEST(JsonHelper, JoinsTheTextsOfAnArray)
{
    EXPECT_EQ(JsonHelper::JsonArrayToString(ParseJson(R"(["x", "y", "z"])"), ","), "x,y,z");
    EXPECT_EQ(JsonHelper::JsonArrayToString(ParseJson(R"(["a", 1])"), ","), "a,");
    EXPECT_EQ(JsonHelper::JsonArrayToString(ParseJson(R"([1, "a"])"), ","), "a");
    EXPECT_EQ(JsonHelper::JsonArrayToString(ParseJson("[]"), ","), "");
    EXPECT_EQ(JsonHelper::JsonArrayToString(ParseJson(R"({"a": "b"})"), ","), "");
    EXPECT_EQ(JsonHelper::JsonArrayToString(Json::Value("a"), ","), "");
}
