// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "json_samples.h"
#include "log_capture.h"

using namespace Nubis;
using NubisTest::ParseJson;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
NBError ErrorOf(const std::string &json, int defaultCode = 9)
{
    NBError error;
    error.ParseErrorFromJson(ParseJson(json), defaultCode);
    return error;
}
} // namespace

TEST(NBError, LocalAndServerPartsStandSideBySide)
{
    NBError error;
    EXPECT_FALSE(error.HasError());
    error.SetLocalError(NB_LOCAL_IPC_FAILED);
    error.SetServerError(5);
    EXPECT_EQ(error.GetReportErrorCode(), "2");
    error.SetLocalError(NB_LOCAL_SUCCESS);
    EXPECT_TRUE(error.HasError());
    EXPECT_FALSE(error.IsLocalError());
    EXPECT_EQ(error.GetReportErrorCode(), "5");
    EXPECT_EQ(NBError(NB_LOCAL_BAD_DATA).GetLocalErrorCode(), 3);
    EXPECT_FALSE(NBError(NB_LOCAL_SUCCESS).HasError());
}

TEST(NBError, TakesTheOuterCodeWhenTheObjectHasNone)
{
    EXPECT_EQ(ErrorOf(R"({"code": 0, "description": ""})", 7).GetServerErrorCode(), 7);
    EXPECT_EQ(ErrorOf(R"({"code": "31"})", 7).GetServerErrorCode(), 7);
    EXPECT_EQ(ErrorOf(R"({"code": -31})", 7).GetServerErrorCode(), -31);
    EXPECT_TRUE(ErrorOf("{}", 0).HasError());
}

TEST(NBError, KeepsItsTypeWhenTheServiceSendsAnUnknownOne)
{
    NubisTest::LogCapture log;
    NBError error = ErrorOf(R"({"errorType": 2})");
    error.ParseErrorFromJson(ParseJson(R"({"errorType": 3})"), 9);
    error.ParseErrorFromJson(ParseJson(R"({"errorType": -1})"), 9);
    EXPECT_EQ(error.GetErrorType(), 2);
    EXPECT_THAT(log.TakeErrors(), ElementsAre("unknown error type:3", "unknown error type:-1"));
    error.ParseErrorFromJson(ParseJson(R"({"errorType": "1"})"), 9);
    EXPECT_EQ(error.GetErrorType(), 0);
}

TEST(NBError, ReadsASingleDetailAndTakesItsReasonForTheText)
{
    NBError error = ErrorOf(R"({"errorDetail": {"reason": "R", "description": "D", "errorCode": "12345678",
        "domain": "dom", "errorPos": "pos", "detailExtra": "ignored"}})");
    ASSERT_EQ(error.GetErrorDetails().size(), 1U);
    const NBErrorDetail &detail = error.GetErrorDetails()[0];
    EXPECT_EQ(detail.detailCode, 5678);
    EXPECT_EQ(detail.domain + detail.errorPos + detail.detailExtra, "dompos");
    EXPECT_EQ(error.GetErrorMsg(), "R");
}

TEST(NBError, AddsDetailsToThoseItHolds)
{
    NBError error = ErrorOf(R"({"errorDetail": [{"reason": "first"}, {"description": "last"}]})");
    EXPECT_EQ(error.GetErrorMsg(), "last");
    error.ParseErrorFromJson(ParseJson(R"({"description": "own", "errorDetail": [{"reason": "third"}]})"), 9);
    EXPECT_EQ(error.GetErrorDetails().size(), 3U);
    EXPECT_EQ(error.GetErrorMsg(), "own");
    error.ParseErrorFromJson(ParseJson(R"({"errorDetail": []})"), 9);
    EXPECT_EQ(error.GetErrorDetails().size(), 3U);
    EXPECT_EQ(error.GetErrorMsg(), "");
}

TEST(NBError, ReadsDetailCodesOnlyFromTextsOfEightCharacters)
{
    const std::pair<const char *, int> codes[] = {{"ABCD1234", 1234}, {"ABCDWXYZ", 0}, {"1234567", 0}, {"123456789", 0},
        {"", 0}, {"000000-5", 0}, {"0000-123", -123}};
    for (const auto &[text, code] : codes) {
        Json::Value json;
        json["errorDetail"]["errorCode"] = text;
        NBError error;
        error.ParseErrorFromJson(json, 1);
        EXPECT_EQ(error.GetErrorDetails()[0].detailCode, code) << text;
    }
}

TEST(NBError, ReportsTheFirstDetailForGeneralServerCodesOnly)
{
    const std::string detail = R"("errorDetail": [{"errorCode": "31004001"}, {"errorCode": "2"}]})";
    EXPECT_EQ(ErrorOf(R"({"code": 1000, )" + detail).GetReportErrorCode(), "31004001");
    EXPECT_EQ(ErrorOf(R"({"code": -5, )" + detail).GetReportErrorCode(), "31004001");
    EXPECT_EQ(ErrorOf(R"({"code": 1001, )" + detail).GetReportErrorCode(), "1001");
    EXPECT_EQ(ErrorOf(R"({"code": 1000, "errorDetail": [{}, {"errorCode": "2"}]})").GetReportErrorCode(), "1000");
}

TEST(NBError, AcceptsWhateverStandsForAnError)
{
    for (const Json::Value &json : NubisTest::HostileJson()) {
        NBError error;
        error.ParseErrorFromJson(json, 4);
        EXPECT_TRUE(error.IsServerError());
        EXPECT_EQ(error.GetServerErrorCode(), 4);
        EXPECT_EQ(error.GetErrorMsg(), "");
        EXPECT_THAT(error.GetErrorDetails(), IsEmpty());
    }
    const Json::Value good =
        ParseJson(R"({"code": 1, "description": "d", "errorType": 1, "errorDetail": [{"reason": "r"}]})");
    for (const Json::Value &json : NubisTest::SpoilEachMember(good)) {
        NBError error;
        EXPECT_NO_THROW(error.ParseErrorFromJson(json, 4));
        EXPECT_TRUE(error.HasError());
    }
}
