// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include <stdexcept>

#include "account/record_id_rules.h"
#include "account/settings.h"
#include "util/encoding.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

struct KeyKind {
    int type;
    size_t bytes;
};
constexpr KeyKind KEY_KINDS[] = {{1, 17}, {3, 33}};
constexpr size_t GUID_BYTES = 16;

Json::Value MakeKeys()
{
    Json::Value keys(Json::arrayValue);
    for (const KeyKind &kind : KEY_KINDS) {
        std::string bytes = RandomBytes(kind.bytes);
        Json::Value key(Json::objectValue);
        key["key"] = HexEncode(bytes);
        key["userKeyGuid"] = HexEncode(RandomBytes(GUID_BYTES));
        // Of the digest's text, not of its bytes: clients compare it so.
        key["userKeySHA256"] = Base64Encode(HexEncode(Sha256(bytes)));
        key["keyType"] = kind.type;
        keys.append(std::move(key));
    }
    return keys;
}

} // namespace

Json::Value GetRecordIdRules(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    EffectiveIdRule rule = FindIdRule(context.store, target.key.bundleName, *target.container);
    Json::Value reply = Success();
    reply["ruleId"] = rule.ruleId;
    reply["upid"] = std::to_string(rule.upid);
    reply["localRule"] = rule.localRule;
    reply["rootId"] = rule.rootId;
    return reply;
}

Json::Value GetServiceKey(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    // In the database, whose file only its owner can read.
    std::string setting = "serviceKeys/" + target.key.bundleName + "/" + target.key.containerName;
    std::string text = KeptSetting(context.store, setting, [] { return WriteJson(MakeKeys()); });
    Json::Value reply = Success();
    std::string error;
    if (!ParseJson(text, reply["keys"], error) || !reply["keys"].isArray()) {
        throw std::runtime_error("the setting " + setting + " is damaged" + (error.empty() ? "" : ": " + error));
    }
    return reply;
}

} // namespace DriveService
