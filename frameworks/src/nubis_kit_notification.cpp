// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nubis_kit.h"

#include <json/value.h>

#include "byte_buffer.h"
#include "json_helper.h"
#include "log.h"
#include "rsa_crypto.h"

// Notifications that the cloud side pushed: verifying and decoding.
namespace Nubis {
namespace {
constexpr const char *TRACE_ID_MEMBER = "x-ov-trace-id";
constexpr const char *SIGNATURE_MEMBER = "signV2";

std::string MakeSignedText(const Json::Value &notification)
{
    std::map<std::string, std::string> members;
    for (const std::string &name : notification.getMemberNames()) {
        if (name != TRACE_ID_MEMBER && name != SIGNATURE_MEMBER) {
            members[name] = JsonHelper::GetStringFromJson(notification, name);
        }
    }
    std::string text;
    for (const auto &[name, value] : members) {
        text.append(text.empty() ? "" : "&").append(name).append("=").append(value);
    }
    return text;
}
} // namespace

NBError NubisNative::VerifyNotificationFromJson(const Json::Value &notification)
{
    if (!notification.isObject()) {
        NB_LOGE("verify notification failed, data is not object");
        return NBError(NB_LOCAL_BAD_NOTIFICATION);
    }
    const std::string verifyData = MakeSignedText(notification);
    const auto keyText = std::atomic_load(&pushKeyValue_);
    const std::string signData = JsonHelper::GetStringFromJson(notification, SIGNATURE_MEMBER);
    const std::vector<uint8_t> key = ByteBuffer::HexStringToValueArray(*keyText);
    const std::vector<uint8_t> signature = ByteBuffer::HexStringToValueArray(signData);
    if (key.empty() || signature.empty()) {
        NB_LOGE("verify notification failed, pubkey or sigin is empty, key:%{public}s, verifyData:%{public}s",
            keyText->c_str(), verifyData.c_str());
        return NBError(NB_LOCAL_BAD_NOTIFICATION);
    }
    if (!RsaCrypto::VerifyWithPubKey(key, verifyData, signature)) {
        NB_LOGE("verify notification failed, verify failed, key:%{public}s, signdata:%{public}s, "
                "verifyData:%{public}s",
            keyText->c_str(), signData.c_str(), verifyData.c_str());
        return NBError(NB_LOCAL_UNEXPECTED_REPLY);
    }
    NB_LOGI("verify notification success");
    return NBError();
}

NBError NubisNative::ResolveNotificationEvent(const std::string &notification, NBRecordChangeEvent &event)
{
    const Json::Value json = JsonHelper::StringToJson(notification);
    const Json::Value payload = JsonHelper::StringToJson(JsonHelper::GetStringFromJson(json, "data"));
    event.accountId = JsonHelper::GetStringFromJson(payload, "accountId");
    event.bundleName = JsonHelper::GetStringFromJson(payload, "bundleName");
    event.containerName = JsonHelper::GetStringFromJson(payload, "containerName");
    return ResolveNotificationEvent(JsonHelper::GetStringFromJson(payload, "databaseScopes"),
        JsonHelper::GetStringFromJson(payload, "recordTypes"), JsonHelper::GetStringFromJson(payload, "properties"),
        JsonHelper::GetStringFromJson(payload, "context"), event);
}

NBError NubisNative::ResolveNotificationEvent(const std::string &databaseScopes, const std::string &recordTypes,
    const std::string &properties, const std::string &context, NBRecordChangeEvent &event)
{
    const Json::Value scopes = JsonHelper::StringToJson(databaseScopes);
    for (Json::ArrayIndex i = 0; scopes.isArray() && i < scopes.size(); ++i) {
        if (!scopes[i].isString()) {
            continue;
        }
        const std::string scope = scopes[i].asString();
        if (scope == "private") {
            event.databaseScopes.push_back(NB_DATABASE_PRIVATE);
        } else if (scope == "shared") {
            event.databaseScopes.push_back(NB_DATABASE_SHARED);
        } else {
            NB_LOGE("resolve notification failed, unknown scope:%{public}s", scope.c_str());
        }
    }
    const Json::Value types = JsonHelper::StringToJson(recordTypes);
    for (Json::ArrayIndex i = 0; types.isArray() && i < types.size(); ++i) {
        if (types[i].isString()) {
            event.recordTypes.push_back(types[i].asString());
        }
    }
    const Json::Value entries = JsonHelper::StringToJson(properties);
    for (const std::string &name : entries.isObject() ? entries.getMemberNames() : Json::Value::Members()) {
        const Json::Value *value = JsonHelper::FindMember(entries, name);
        if (value != nullptr && value->isString()) {
            event.properties[name] = value->asString();
        }
    }
    if (!context.empty()) {
        event.prepareTraceId = JsonHelper::GetStringFromJson(JsonHelper::StringToJson(context), "prepareTraceId");
    }
    return NBError();
}
} // namespace Nubis
