// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_record_oper_result.h"

#include <gtest/gtest.h>

#include "json_samples.h"
#include "record_builder.h"
#include "schema_builder.h"

using namespace Nubis;
using NubisTest::ParseJson;

namespace {
const NBSchema SCHEMA = NubisTest::SchemaBuilder().Type("person").Field("age", NB_FIELD_INTEGER).Build();

// What a save holds before the reply is there.
NBRecordOperResult Pending()
{
    return NBRecordOperResult(
        NBError(NB_LOCAL_UNEXPECTED_REPLY), NubisTest::RecordBuilder("person", "local").AtVersion(3).Build());
}

NBRecordOperResult ResultOf(const std::string &json)
{
    NBRecordOperResult result = Pending();
    result.ParseFromJsonValue(SCHEMA, ParseJson(json));
    return result;
}
} // namespace

TEST(NBRecordOperResult, ASuccessIsTheRecordItself)
{
    auto result = ResultOf(R"({"code": 0, "recordId": "r1", "recordType": "person", "version": 4})");
    EXPECT_FALSE(result.HasError());
    EXPECT_EQ(result.GetRecord().GetRecordId(), "r1");
    EXPECT_EQ(result.GetRecord().GetVersion(), 4U);
    NBRecord record;
    result.StealRecord(record);
    EXPECT_EQ(record.GetRecordId(), "r1");
    EXPECT_EQ(result.GetRecord().GetRecordId(), "");
    EXPECT_EQ(ResultOf(R"({"code": 0, "recordId": "r1", "recordType": "cat"})").GetLocalErrorCode(), NB_LOCAL_BAD_DATA);
}

TEST(NBRecordOperResult, NoCodeOrNoErrorIsAnUnexpectedReply)
{
    auto result = ResultOf(R"({"recordId": "r1"})");
    EXPECT_EQ(result.GetLocalErrorCode(), NB_LOCAL_UNEXPECTED_REPLY);
    EXPECT_EQ(result.GetRecord().GetRecordId(), "r1");
    EXPECT_EQ(result.GetRecord().GetVersion(), 3U);
    for (const char *json :
        {R"({"code": "0", "recordType": "person"})", R"({"code": 7, "recordId": ""})", "[]", "null"}) {
        EXPECT_EQ(ResultOf(json).GetLocalErrorCode(), NB_LOCAL_UNEXPECTED_REPLY) << json;
        EXPECT_EQ(ResultOf(json).GetRecord().GetRecordId(), "local") << json;
    }
}

TEST(NBRecordOperResult, AFailureOfTheServiceReplacesTheLocalError)
{
    auto result = ResultOf(R"({"code": 7, "recordId": "r1", "error": {"code": 0, "description": "no room"}})");
    EXPECT_FALSE(result.IsLocalError());
    EXPECT_EQ(result.GetServerErrorCode(), 7);
    EXPECT_EQ(result.GetErrorMsg(), "no room");
    EXPECT_EQ(result.GetRecord().GetRecordId(), "r1");
    // "error" counts by being there, whatever it is.
    EXPECT_EQ(ResultOf(R"({"code": 7, "error": null})").GetServerErrorCode(), 7);
    EXPECT_FALSE(ResultOf(R"({"code": 7, "error": "text"})").IsLocalError());
}

TEST(NBRecordOperResult, NoReplyMakesReadingThrow)
{
    const Json::Value good =
        ParseJson(R"({"code": 7, "recordId": "r", "recordType": "person", "error": {}, "record": {"age": 1}})");
    for (const Json::Value &json : NubisTest::SpoilEachMember(good)) {
        NBRecordOperResult result = Pending();
        EXPECT_NO_THROW(result.ParseFromJsonValue(SCHEMA, json));
    }
}
