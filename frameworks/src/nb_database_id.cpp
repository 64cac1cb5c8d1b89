// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_database.h"

#include <cstdlib>

#include <json/value.h>

#include "crid.h"
#include "json_helper.h"
#include "log.h"
#include "nb_database_worker.h"
#include "uuid_helper.h"

// The making of record ids.
namespace Nubis {
namespace {
constexpr uint32_t RULE_CRID_V1 = 1;
constexpr uint32_t RULE_CRID_V5 = 5;
constexpr int DECIMAL = 10;

std::string CridText(const std::shared_ptr<Crid> &crid)
{
    return crid == nullptr ? "" : crid->GetCrid();
}
} // namespace

NBError NBDatabase::GetRecordIdRules()
{
    Json::Value request = MakeRequest("getRecordIdRules");
    NBError error = Exchange(request, RECORD_REQUEST_TIMEOUT, [this](const Json::Value &reply, NBError &) {
        std::lock_guard<std::mutex> lock(recordIdRulesMutex_);
        ruleId_ = JsonHelper::GetUIntFromJson(reply, "ruleId");
        upid_ = std::strtoull(JsonHelper::GetStringFromJson(reply, "upid").c_str(), nullptr, DECIMAL);
        localRule_ = JsonHelper::GetStringFromJson(reply, "localRule");
        rootId_ = JsonHelper::GetStringFromJson(reply, "rootId");
        fetched_ |= RULES_FETCHED;
    });
    if (error.HasError()) {
        NB_LOGE("get record id failed");
    }
    return error;
}

std::string NBDatabase::GenerateId(const std::string &key)
{
    if ((fetched_ & RULES_FETCHED) == 0) {
        GetRecordIdRules();
    }
    if ((fetched_ & RULES_FETCHED) == 0) {
        NB_LOGE("get record id failed, generate id failed");
        return "";
    }
    uint32_t ruleId = 0;
    uint64_t upid = 0;
    std::string localRule;
    {
        std::lock_guard<std::mutex> lock(recordIdRulesMutex_);
        ruleId = ruleId_;
        upid = upid_;
        localRule = localRule_;
    }
    if (!key.empty()) {
        return CridText(CridV10::Encode(upid, key));
    }
    if (localRule == "UUID") {
        return UuidHelper::GenerateUuidWithoutDelim() + UuidHelper::GenerateUuidWithoutDelim();
    }
    if (!localRule.empty()) {
        NB_LOGE("unknown generate local rule:%{public}s", localRule.c_str());
        return "";
    }
    if (ruleId == RULE_CRID_V1) {
        return CridText(CridV1::Random(upid));
    }
    if (ruleId == RULE_CRID_V5) {
        return CridText(CridV5::Random(upid));
    }
    NB_LOGE("not support record rule id:%{public}d", static_cast<int>(ruleId));
    return "";
}

NBError NBDatabase::GenerateIds(int count, std::vector<std::string> &ids)
{
    for (int i = 0; i < count; ++i) {
        std::string id = GenerateId("");
        if (id.empty()) {
            return NBError(NB_LOCAL_EMPTY_REPLY);
        }
        ids.push_back(std::move(id));
    }
    return NBError();
}

NBError NBDatabase::GenerateIdsWithKey(const std::vector<std::string> &keys, std::vector<std::string> &ids)
{
    for (const auto &key : keys) {
        std::string id = GenerateId(key);
        if (id.empty()) {
            return NBError(NB_LOCAL_EMPTY_REPLY);
        }
        ids.push_back(std::move(id));
    }
    return NBError();
}

NBError NBDatabase::GetRootId(std::string &rootId)
{
    NBError error = GetRecordIdRules();
    if (!error.HasError()) {
        std::lock_guard<std::mutex> lock(recordIdRulesMutex_);
        rootId = rootId_;
    }
    return error;
}
} // namespace Nubis
