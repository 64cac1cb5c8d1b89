// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "error_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include "command_error.h"
#include "row_reader.h"

namespace NubisTool {
namespace {
using testing::HasSubstr;
using testing::Not;

Nubis::NBError ServerError(const std::string &json)
{
    Json::Value value;
    std::string reason;
    EXPECT_TRUE(ParseJsonText(json, value, reason)) << reason;
    Nubis::NBError error;
    error.ParseErrorFromJson(value, 0);
    return error;
}

TEST(ErrorText, SaysWhatWhereAndWhatNext)
{
    Nubis::NBError error =
        ServerError(R"({"code": 1102, "description": "age is no number", "errorType": 0, "errorDetail":
        [{"reason": "INVALID_FIELD", "errorCode": "31001102", "description": "age is no number", "errorPos": "age"},
         {"reason": "INVALID_FIELD", "description": "missing", "errorPos": "name"}]})");
    EXPECT_EQ(ErrorText(error), "age is no number [name: missing] (INVALID_FIELD, code 1102)");
    EXPECT_THAT(ErrorAdvice(error), HasSubstr("catalogue show"));
    EXPECT_FALSE(IsTransportError(error));

    EXPECT_THAT(ErrorAdvice(ServerError(R"({"code": 1106, "errorType": 1})")), HasSubstr("record get"));
    EXPECT_THAT(ErrorAdvice(ServerError(R"({"code": 1201, "errorType": 2})")), HasSubstr("try again"));
}

TEST(ErrorText, TellsALostServiceFromOtherLocalErrors)
{
    for (auto code : {Nubis::NB_LOCAL_NOT_CONNECTED, Nubis::NB_LOCAL_IPC_FAILED, Nubis::NB_LOCAL_EMPTY_REPLY}) {
        EXPECT_TRUE(IsTransportError(Nubis::NBError(code)));
        EXPECT_THAT(ErrorAdvice(Nubis::NBError(code)), HasSubstr("nubis doctor"));
        EXPECT_THAT(ErrorText(Nubis::NBError(code)), HasSubstr("local code " + std::to_string(code)));
    }
    EXPECT_FALSE(IsTransportError(Nubis::NBError(Nubis::NB_LOCAL_BAD_DATA)));
    EXPECT_FALSE(IsTransportError(Nubis::NBError()));
    EXPECT_NO_THROW(ThrowIfError(Nubis::NBError(), "x"));
    EXPECT_THROW(ThrowIfError(Nubis::NBError(Nubis::NB_LOCAL_BAD_DATA), "x"), CommandError);
}
} // namespace
} // namespace NubisTool
