// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/json_writer.h"

#include <cfloat>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "util/json_util.h"

namespace DriveService {
namespace {

Json::Value Parse(const std::string &text)
{
    Json::Value value;
    std::string error;
    EXPECT_TRUE(ParseJson(text, value, error)) << text << ": " << error;
    return value;
}

TEST(JsonWriterTest, WhatIsWrittenReadsAsTheSameValues)
{
    Json::Value value;
    for (double real : {0.1, -0.0, 1.0, 1e21, 1.0 / 3, DBL_MAX, DBL_MIN, DBL_TRUE_MIN, 9007199254740993.0}) {
        value["reals"].append(real);
    }
    for (int64_t integer : {std::numeric_limits<int64_t>::min(), int64_t{-1}, std::numeric_limits<int64_t>::max()}) {
        value["integers"].append(Json::Int64(integer));
    }
    value["largest"] = Json::UInt64(std::numeric_limits<uint64_t>::max());
    value["texts"].append(std::string("zero\0byte", 9));
    value["texts"].append("\"\\/\b\f\n\r\t\x01\x1f\x7f");
    value["texts"].append(u8"äöü € 😀 \u2028");
    value["texts"].append("");
    value["a \"name\" with\nmarks"][""]["deep"] = true;
    value["empty"].append(Json::Value(Json::objectValue));
    value["empty"].append(Json::Value(Json::arrayValue));
    value["empty"].append(Json::Value());

    const std::string text = WriteJson(value);
    EXPECT_EQ(Parse(text), value) << text;
    EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    // Whole numbers stay reals, and nobody sees digits that say nothing.
    EXPECT_NE(text.find("[0.1,-0.0,1.0,"), std::string::npos) << text;
    EXPECT_TRUE(std::signbit(Parse(text)["reals"][1].asDouble()));
}

TEST(JsonWriterTest, NumbersThatJsonDoesNotHaveBecomeNull)
{
    Json::Value value(Json::arrayValue);
    value.append(std::numeric_limits<double>::infinity());
    value.append(std::nan(""));
    value.append(1);
    EXPECT_EQ(WriteJson(value), "[null,null,1]");
}

TEST(JsonWriterTest, WrittenMembersAndListsAreTakenAsTheyAre)
{
    JsonList none;
    EXPECT_EQ(none.Take(), "[]");
    JsonList list;
    list.Append(WriteJson(Json::Value("a,b")));
    list.Append("{}");
    const std::string elements = list.Take();
    EXPECT_EQ(elements, R"(["a,b",{}])");

    Json::Value object(Json::objectValue);
    EXPECT_EQ(WriteJson(object, {{"list", elements}, {"other", "1"}}), R"({"list":["a,b",{}],"other":1})");
    object["code"] = 0;
    EXPECT_EQ(WriteJson(object, {{"list", elements}}), R"({"code":0,"list":["a,b",{}]})");
    EXPECT_EQ(WriteJson(object, {}), R"({"code":0})");
}

} // namespace
} // namespace DriveService
