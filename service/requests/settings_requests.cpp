// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include "account/service_setting.h"
#include "util/failure.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

Json::Value SettingToJson(const SettingRule &rule, const ServiceSetting &setting)
{
    Json::Value json(Json::objectValue);
    json["name"] = rule.name;
    json["default"] = rule.initial;
    switch (setting.state) {
        case SettingState::DEFAULT:
            json["state"] = "default";
            break;
        case SettingState::SET:
            json["state"] = "set";
            break;
        case SettingState::UNSET:
            json["state"] = "unset";
            return json;
    }
    json["value"] = setting.value;
    return json;
}

const SettingRule &RuleOf(const Request &request)
{
    std::string name = request.NonEmptyText("name");
    if (const SettingRule *rule = FindSettingRule(name)) {
        return *rule;
    }
    std::string names;
    for (const SettingRule &rule : SettingRules()) {
        names += (names.empty() ? "" : ", ") + std::string(rule.name);
    }
    throw RequestError(
        ErrorCode::INVALID_ARGUMENT, "there is no setting \"" + Excerpt(name) + "\", only " + names, "name");
}

// What the request wants of the setting: exactly one of "value", "unset" and "reset".
ServiceSetting WantedSetting(const Request &request, const SettingRule &rule)
{
    bool unset = request.BooleanOr("unset", false);
    bool reset = request.BooleanOr("reset", false);
    const Json::Value *value = request.Find("value");
    if ((unset ? 1 : 0) + (reset ? 1 : 0) + (value != nullptr ? 1 : 0) != 1) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            "expected one of \"value\", \"unset\": true and \"reset\": true, and only one", "value");
    }
    if (unset) {
        return {SettingState::UNSET, Json::Value()};
    }
    if (reset) {
        return {SettingState::DEFAULT, rule.initial};
    }
    if (!rule.fits(*value)) {
        throw RequestError(ErrorCode::INVALID_ARGUMENT,
            std::string("setting \"") + rule.name + "\": expected " + rule.expected + ", came " + DescribeJson(*value),
            "value");
    }
    return {SettingState::SET, *value};
}

} // namespace

Json::Value GetSettings(ServiceContext &context, const Request &)
{
    std::unique_ptr<ReadSession> session = context.store.BeginRead();
    Json::Value reply = Success();
    Json::Value &settings = reply["settings"] = Json::Value(Json::arrayValue);
    for (const SettingRule &rule : SettingRules()) {
        settings.append(SettingToJson(rule, ReadSetting(*session, rule)));
    }
    return reply;
}

Json::Value SetSetting(ServiceContext &context, const Request &request)
{
    const SettingRule &rule = RuleOf(request);
    ServiceSetting wanted = WantedSetting(request, rule);
    std::unique_ptr<WriteSession> session = context.store.BeginWrite();
    WriteSetting(*session, rule, wanted.state, wanted.value);
    session->Commit();
    Json::Value reply = Success();
    reply["setting"] = SettingToJson(rule, wanted);
    return reply;
}

} // namespace DriveService
