// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "account/service_setting.h"

#include <algorithm>

#include "records/limits.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

bool IsInteger(const Json::Value &value)
{
    return value.type() == Json::intValue || value.type() == Json::uintValue;
}

bool IsSwitch(const Json::Value &value)
{
    return IsInteger(value) && (value == 0 || value == 1);
}

bool IsTextList(const Json::Value &value)
{
    return value.isArray() && value.size() <= MAX_SETTING_TEXTS &&
           std::all_of(value.begin(), value.end(), [](const Json::Value &element) {
               return element.isString() && element.asString().size() <= MAX_SETTING_TEXT_BYTES;
           });
}

bool IsFlowControl(const Json::Value &value)
{
    if (!value.isObject()) {
        return false;
    }
    std::vector<std::string> members = value.getMemberNames();
    return std::all_of(members.begin(), members.end(), [&value](const std::string &member) {
        return (member == "flowSpeedLimit" || member == "flowThreshold") && IsInteger(value[member]) &&
               value[member].isUInt();
    });
}

Json::Value NoFlowControl()
{
    Json::Value value(Json::objectValue);
    value["flowSpeedLimit"] = 0;
    value["flowThreshold"] = 0;
    return value;
}

std::string StoreName(const SettingRule &rule)
{
    return std::string("setting/") + rule.name;
}

} // namespace

const std::vector<SettingRule> &SettingRules()
{
    constexpr const char *list = "an array of at most 1000 texts of at most 512 bytes";
    constexpr const char *onOff = "0 or 1";
    static const auto *rules = new std::vector<SettingRule>{
        {"enableQuicDomainList", true, list, IsTextList, Json::Value(Json::arrayValue)},
        {"flowControl", true,
            "an object with the members \"flowSpeedLimit\" and \"flowThreshold\", integers from 0 to 4294967295",
            IsFlowControl, NoFlowControl()},
        {"flowControlWhiteList", true, list, IsTextList, Json::Value(Json::arrayValue)},
        {"ohNubisUseAsyncIPC", true, onOff, IsSwitch, Json::Value(1)},
        {SETTING_UPLOAD_CALLBACK, false, onOff, IsSwitch, Json::Value(1)},
        {SETTING_CHECK_ALIVE, false, onOff, IsSwitch, Json::Value(1)},
    };
    return *rules;
}

const SettingRule *FindSettingRule(const std::string &name)
{
    const std::vector<SettingRule> &rules = SettingRules();
    auto found =
        std::find_if(rules.begin(), rules.end(), [&name](const SettingRule &rule) { return name == rule.name; });
    return found == rules.end() ? nullptr : &*found;
}

ServiceSetting ReadSetting(ReadSession &session, const SettingRule &rule)
{
    Json::Value kept;
    std::string error;
    std::optional<std::string> text = session.Setting(StoreName(rule));
    if (text && ParseJson(*text, kept, error) && kept.isObject()) {
        if (kept["unset"] == true) {
            return {SettingState::UNSET, Json::Value()};
        }
        if (rule.fits(kept["value"])) {
            return {SettingState::SET, kept["value"]};
        }
    }
    return {SettingState::DEFAULT, rule.initial};
}

void WriteSetting(WriteSession &session, const SettingRule &rule, SettingState state, const Json::Value &value)
{
    Json::Value kept(Json::objectValue);
    if (state == SettingState::SET) {
        kept["value"] = value;
    } else if (state == SettingState::UNSET) {
        kept["unset"] = true;
    }
    session.SetSetting(StoreName(rule), WriteJson(kept));
}

} // namespace DriveService
