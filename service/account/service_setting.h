// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_ACCOUNT_SERVICE_SETTING_H
#define NUBIS_SERVICE_ACCOUNT_SERVICE_SETTING_H

#include <string>
#include <vector>

#include <json/json.h>

#include "store/store.h"

namespace DriveService {

constexpr const char *SETTING_CHECK_ALIVE = "checkAlive";
constexpr const char *SETTING_UPLOAD_CALLBACK = "uploadCallback"; // whether clients are asked for pending assets

// What can be changed of a service's behaviour towards its user's clients while it runs.
struct SettingRule {
    const char *name;
    bool isSysParameter;  // of the "getSysParameters" reply
    const char *expected; // of a value, in words
    bool (*fits)(const Json::Value &value);
    Json::Value initial;
};

// All of them; system parameters in the order of their reply.
const std::vector<SettingRule> &SettingRules();

// Null when there is no setting of this name.
const SettingRule *FindSettingRule(const std::string &name);

enum class SettingState {
    DEFAULT, // never changed, or reset
    SET,
    UNSET, // clients are not told any value
};

struct ServiceSetting {
    SettingState state = SettingState::DEFAULT;
    Json::Value value; // what clients are told; null when unset
};

// What was kept in a form that the rule does not allow counts as never changed.
ServiceSetting ReadSetting(ReadSession &session, const SettingRule &rule);

// `value` must fit the rule; it is used for SET only.
void WriteSetting(
    WriteSession &session, const SettingRule &rule, SettingState state, const Json::Value &value = Json::Value());

} // namespace DriveService

#endif // NUBIS_SERVICE_ACCOUNT_SERVICE_SETTING_H
