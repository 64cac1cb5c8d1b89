// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <json/value.h>

#include "fuzz_kit.h"
#include "fuzz_target.h"
#include "json_helper.h"

using Nubis::JsonHelper;

namespace {
void CheckContainer(const Nubis::NBContainerInfo &container, const std::string &bundleName)
{
    FUZZ_CHECK(container.bundleName.empty() || container.bundleName == bundleName);
    for (const auto &[name, node] : container.schema.recordTypes) {
        FUZZ_CHECK(!name.empty() && node.recordType == name);
        for (const auto &[fieldName, field] : node.fields) {
            FUZZ_CHECK(!fieldName.empty() && field.name == fieldName);
        }
    }
    for (const auto &table : container.schema.orderTables) {
        FUZZ_CHECK(container.schema.recordTypes.count(table.recordType) == 1);
    }
    const std::string &text = container.schema.schemaData;
    FUZZ_CHECK(text.empty() || JsonHelper::JsonToString(JsonHelper::StringToJson(text)) == text);
}
} // namespace

void Fuzz::TestOne(const std::string &input)
{
    const auto &kit = Kit();
    const Json::Value reply = JsonHelper::StringToJson(input);
    std::map<std::string, Nubis::NBAppInfo> apps;
    FUZZ_CHECK(!kit->GetAppInfoFromJson(reply, apps).HasError() || apps.empty());
    for (const auto &[bundleName, app] : apps) {
        FUZZ_CHECK(!bundleName.empty() && app.bundleName == bundleName);
        CheckContainer(app.defaultContainer, bundleName);
        for (const auto &container : app.sharedContainers) {
            CheckContainer(container, bundleName);
        }
    }
    std::map<std::string, Nubis::NBAppSwitchStatus> switches;
    FUZZ_CHECK(!kit->GetAppSwitchsFromJson(reply, switches).HasError() || switches.empty());
    for (const auto &[bundleName, status] : switches) {
        FUZZ_CHECK(!bundleName.empty() && status <= Nubis::NB_APP_SWITCH_UNKNOWN);
    }
    std::vector<Nubis::NBAppBriefInfo> infos;
    bool hasMore = false;
    int nextIndex = -1;
    Nubis::NBUploadSize uploadSize;
    const bool failed = kit->GetBriefInfoFromJson(reply, infos, hasMore, nextIndex, uploadSize).HasError();
    FUZZ_CHECK(!failed || (infos.empty() && !hasMore && nextIndex == -1));

    // The whole way: what is cached, and the schemas of live containers.
    AnswerWith(input);
    std::map<std::string, Nubis::NBAppInfo> fetched;
    FUZZ_CHECK(!kit->GetCloudAppInfo({BUNDLE}, fetched).HasError() || fetched.empty());
    for (const auto &[bundleName, app] : fetched) {
        const auto container = kit->GetDefaultContainer(bundleName);
        FUZZ_CHECK(container != nullptr);
        kit->ReleaseDefaultContainer(bundleName);
    }
    std::map<std::string, std::string> params;
    kit->GetAppConfigParams(BUNDLE, params);
}
