// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include <json/value.h>

#include "fuzz_kit.h"
#include "fuzz_target.h"
#include "json_helper.h"
#include "sys_config.h"

using Nubis::JsonHelper;

namespace {
void ReadSysConfig(const std::string &text)
{
    // A fresh one: parameters that a reply leaves out stay as they were.
    Nubis::SysConfig config(Fuzz::USER);
    Fuzz::AnswerWith(text);
    if (!config.GetConfigFromCloud()) {
        FUZZ_CHECK(config.GetQuicDomainList().empty() && config.GetFlowControlWhiteList().empty());
        FUZZ_CHECK(config.GetFlowSpeedLimit() == 0 && config.GetFlowThreshold() == 0);
    }
}

void ReadServiceKeys(const std::string &text)
{
    const auto &database = Fuzz::Database();
    Fuzz::AnswerWith(text);
    database->ParseServiceKey(JsonHelper::StringToJson(text));
    const auto key = database->GetUserKey("");
    FUZZ_CHECK(key != nullptr);
    const auto isEnded = [](const auto &uuid) {
        return std::find(std::begin(uuid), std::end(uuid), '\0') != std::end(uuid);
    };
    FUZZ_CHECK(isEnded(key->efekUuid) && isEnded(key->sfekUuid));
    database->GetCommonKey(1, 1);
    database->GetAT();
}

void Upload(const std::string &text)
{
    const Json::Value request = JsonHelper::StringToJson(text);
    Fuzz::Database();
    const Fuzz::GoodService good;
    std::string reply = "untouched";
    const int32_t result = Fuzz::Kit()->OnUploadAsset(text, reply);
    FUZZ_CHECK(result == 0 || reply == "untouched");
    FUZZ_CHECK(result == 0 ? request.isObject() : result == -1);
    std::string uploaded = "untouched";
    Fuzz::Database()->OnUploadRecordAssets(request, uploaded);
    FUZZ_CHECK(uploaded == "untouched" || uploaded == "null");
}
} // namespace

// What else the library reads of the service; the first byte tells which.
void Fuzz::TestOne(const std::string &input)
{
    Kit();
    switch (Selector(input)) {
        case 'c':
            ReadSysConfig(Body(input));
            break;
        case 'k':
            ReadServiceKeys(Body(input));
            break;
        default:
            Upload(Body(input));
            break;
    }
}
