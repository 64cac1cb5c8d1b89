// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include <cstdlib>
#include <stdexcept>
#include <utility>

#include <sys/statvfs.h>

#include "account/service_setting.h"
#include "account/settings.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

// A setting that holds an object with at least the members of the initial one, of the same types. Whoever changes one
// by hand may break it; then it counts as not there.
Json::Value JsonSetting(ServiceContext &context, const std::string &name, const Json::Value &initial)
{
    std::string text = KeptSetting(context.store, name, [&initial] { return WriteJson(initial); });
    Json::Value value;
    std::string error;
    if (!ParseJson(text, value, error) || !value.isObject()) {
        return initial;
    }
    for (const std::string &member : initial.getMemberNames()) {
        if (value[member].type() != initial[member].type()) {
            return initial;
        }
    }
    return value;
}

void AddSpace(const std::string &folder, Json::Value &userInfo)
{
    struct statvfs space {};
    if (statvfs(folder.c_str(), &space) != 0) {
        throw std::runtime_error("the space of " + folder + " cannot be read");
    }
    userInfo["totalSpace"] = Json::UInt64(uint64_t{space.f_blocks} * space.f_frsize);
    userInfo["remainSpace"] = Json::UInt64(uint64_t{space.f_bavail} * space.f_frsize);
}

} // namespace

Json::Value GetCloudUserInfo(ServiceContext &context, const Request &request)
{
    constexpr int SIGNED_IN = 1;
    Json::Value userInfo(Json::objectValue);
    userInfo["userId"] = AccountId(context.store);
    userInfo["cloudStatus"] =
        std::atoi(KeptSetting(context.store, SETTING_CLOUD_STATUS, [] { return std::to_string(SIGNED_IN); }).c_str());
    userInfo["pushKeyId"] = context.pushKey.Id();
    userInfo["pushKeyValue"] = context.pushKey.PublicKeyHex();
    if (request.BooleanOr("needSpaceInfo", false)) {
        AddSpace(context.dataFolder, userInfo);
    }
    Json::Value reply = Success();
    reply["userInfo"] = std::move(userInfo);
    return reply;
}

Json::Value GetAppState(ServiceContext &context, const Request &)
{
    ServiceSetting setting = ReadSetting(*context.store.BeginRead(), *FindSettingRule(SETTING_CHECK_ALIVE));
    Json::Value reply = Success();
    if (setting.state != SettingState::UNSET) {
        reply[SETTING_CHECK_ALIVE] = setting.value;
    }
    return reply;
}

Json::Value GetSysParameters(ServiceContext &context, const Request &)
{
    std::unique_ptr<ReadSession> session = context.store.BeginRead();
    Json::Value reply = Success();
    Json::Value &parameters = reply["parameters"] = Json::Value(Json::arrayValue);
    for (const SettingRule &rule : SettingRules()) {
        ServiceSetting setting = ReadSetting(*session, rule);
        if (!rule.isSysParameter || setting.state == SettingState::UNSET) {
            continue;
        }
        Json::Value parameter(Json::objectValue);
        parameter["key"] = rule.name;
        parameter["value"] = setting.value;
        parameters.append(std::move(parameter));
    }
    return reply;
}

Json::Value GetReportInfo(ServiceContext &context, const Request &)
{
    Json::Value info(Json::objectValue);
    info["reportUrl"] = "https://localhost/nubis/events";
    info["reportParam"]["channel"] = "local";
    info["reportParam"]["region"] = "local";
    info = JsonSetting(context, "reportInfo", info);
    Json::Value reply = Success();
    reply["reportUrl"] = info["reportUrl"];
    reply["reportParam"] = info["reportParam"];
    return reply;
}

} // namespace DriveService
