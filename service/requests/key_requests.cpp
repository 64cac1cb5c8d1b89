// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include <limits>

#include "account/settings.h"
#include "records/limits.h"
#include "util/encoding.h"
#include "util/failure.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

constexpr size_t COMMON_KEY_BYTES = 32;
constexpr size_t TOKEN_BYTES = 32;
constexpr int64_t TOKEN_MS = int64_t{60} * 60 * 1000;

std::string Int32Text(const Request &request, const char *name)
{
    return std::to_string(
        request.Integer(name, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

std::string MakeToken(int64_t nowMs)
{
    Json::Value token(Json::objectValue);
    token["accessToken"] = Base64UrlEncode(RandomBytes(TOKEN_BYTES));
    token["expireTime"] = Json::Int64(nowMs + TOKEN_MS);
    return WriteJson(token);
}

// Reads a kept token; false when it was damaged by hand or has run out, also by a clock that was set back.
bool ReadToken(const std::string &text, int64_t nowMs, Json::Value &token)
{
    std::string error;
    if (!ParseJson(text, token, error) || TextMember(token, "accessToken").empty() || !token["expireTime"].isInt64()) {
        return false;
    }
    int64_t expireTime = token["expireTime"].asInt64();
    return nowMs < expireTime && expireTime <= nowMs + TOKEN_MS;
}

} // namespace

Json::Value GetCommonKey(ServiceContext &context, const Request &request)
{
    constexpr const char *FAMILY = "commonKey/";
    std::string setting = FAMILY + Int32Text(request, "dataType") + "/" + Int32Text(request, "keyType");
    std::unique_ptr<ReadSession> session = context.store.BeginRead();
    if (!session->Setting(setting) && session->CountSettings(FAMILY) >= MAX_COMMON_KEYS) {
        throw RequestError(ErrorCode::LIMIT_REACHED,
            "there are " + std::to_string(MAX_COMMON_KEYS) +
                " common keys, more are not made; use one of those that were asked for before",
            "dataType");
    }
    session.reset();
    Json::Value reply = Success();
    // In the database, whose file only its owner can read.
    reply["key"] = KeptSetting(context.store, setting, [] { return HexEncode(RandomBytes(COMMON_KEY_BYTES)); });
    return reply;
}

Json::Value GetAccessToken(ServiceContext &context, const Request &request)
{
    Target target = FindTarget(context, request);
    std::string setting = SETTINGS_ACCESS_TOKEN + target.key.bundleName + "/" + target.key.containerName;
    int64_t nowMs = context.nowMs();
    auto make = [nowMs] { return MakeToken(nowMs); };
    auto isCurrent = [nowMs](const std::string &kept) {
        Json::Value token;
        return ReadToken(kept, nowMs, token);
    };
    Json::Value token;
    ReadToken(KeptSetting(context.store, setting, make, isCurrent), nowMs, token);
    Json::Value reply = Success();
    reply["accessToken"] = token["accessToken"];
    reply["expireTime"] = token["expireTime"];
    return reply;
}

} // namespace DriveService
