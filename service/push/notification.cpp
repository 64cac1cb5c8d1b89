// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "push/notification.h"

#include <map>

#include <json/json.h>

#include "util/json_writer.h"

namespace DriveService {

namespace {

std::string DataText(const Notice &notice, const std::string &accountId)
{
    Json::Value context(Json::objectValue);
    if (!notice.content.prepareTraceId.empty()) {
        context["prepareTraceId"] = notice.content.prepareTraceId;
    }
    Json::Value properties(Json::objectValue);
    properties["subscriptionId"] = notice.subscription.id;
    Json::Value data(Json::objectValue);
    data["accountId"] = accountId;
    data["bundleName"] = notice.subscription.bundleName;
    data["containerName"] = notice.subscription.containerName;
    data["databaseScopes"] = notice.content.databaseScopes;
    data["recordTypes"] = notice.content.recordTypes;
    data["properties"] = WriteJson(properties);
    data["context"] = WriteJson(context);
    return WriteJson(data);
}

} // namespace

std::string MakeNotification(const Notice &notice, const std::string &accountId, const std::string &keyId,
    const std::function<std::string(const std::string &)> &sign)
{
    const std::map<std::string, std::string> members{
        {"data", DataText(notice, accountId)}, {"keyId", keyId}, {"notifyId", notice.uid}};
    Json::Value notification(Json::objectValue);
    std::string text;
    for (const auto &[name, value] : members) {
        notification[name] = value;
        text += (text.empty() ? "" : "&") + name + "=" + value;
    }
    notification["signV2"] = sign(text);
    notification["x-ov-trace-id"] = notice.content.prepareTraceId;
    return WriteJson(notification);
}

} // namespace DriveService
