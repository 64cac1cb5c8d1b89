// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "fuzz_kit.h"
#include "fuzz_target.h"
#include "json_helper.h"
#include "reply_operations.h"

using Nubis::JsonHelper;

// The first byte names the operation, the rest is what the service answers.
void Fuzz::TestOne(const std::string &input)
{
    const std::string body = Body(input);
    Database();
    AnswerWith(body);
    RunOperation(Selector(input));

    // A reply is judged by what it says of itself.
    Json::Value reply = "untouched";
    const Nubis::NBError error = Kit()->SendDataToCloudSrv(Json::Value(Json::objectValue), reply, 1);
    const Json::Value said = JsonHelper::StringToJson(body);
    if (body.empty()) {
        FUZZ_CHECK(error.GetLocalErrorCode() == Nubis::NB_LOCAL_EMPTY_REPLY && reply == "untouched");
    } else {
        FUZZ_CHECK(error.HasError() == (JsonHelper::GetIntFromJson(said, "code") != 0));
        FUZZ_CHECK(error.IsServerError() == (error.HasError() && JsonHelper::HasMember(said, "error")));
    }
}
