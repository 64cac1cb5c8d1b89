// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "notification.h"

#include "error_text.h"
#include "row_reader.h"

namespace NubisTool {
namespace {

const char *ScopeName(Nubis::NBDatabaseScope scope)
{
    switch (scope) {
        case Nubis::NB_DATABASE_PUBLIC:
            return "public";
        case Nubis::NB_DATABASE_PRIVATE:
            return "private";
        default:
            return "shared";
    }
}

std::string Joined(const Json::Value &texts)
{
    std::string joined;
    for (const Json::Value &text : texts) {
        joined += (joined.empty() ? "" : ",") + text.asString();
    }
    return joined;
}

Json::Value ScopesOf(const Notification &notification)
{
    Json::Value scopes(Json::arrayValue);
    for (Nubis::NBDatabaseScope scope : notification.event.databaseScopes) {
        scopes.append(ScopeName(scope));
    }
    return scopes;
}

Json::Value TypesOf(const Notification &notification)
{
    Json::Value types(Json::arrayValue);
    for (const std::string &type : notification.event.recordTypes) {
        types.append(type);
    }
    return types;
}

std::string RefusalText(const Nubis::NBError &error)
{
    if (!error.HasError()) {
        return "";
    }
    switch (error.GetLocalErrorCode()) {
        case Nubis::NB_LOCAL_BAD_NOTIFICATION:
            return "it is no JSON object with a signature \"signV2\", or there is no key to check it with";
        case Nubis::NB_LOCAL_UNEXPECTED_REPLY:
            return "its signature is not the service's for this content";
        default:
            return ErrorText(error);
    }
}

} // namespace

Notification ReadNotification(Nubis::NubisNative &kit, const std::string &text)
{
    Notification notification;
    notification.text = text;
    Json::Value json;
    std::string problem;
    if (!ParseJsonText(text, json, problem)) {
        notification.refusal = "it is no JSON: " + problem;
        return notification;
    }
    notification.refusal = RefusalText(kit.VerifyNotificationFromJson(json));
    kit.ResolveNotificationEvent(text, notification.event);
    return notification;
}

Json::Value NotificationToJson(const Notification &notification)
{
    const Nubis::NBRecordChangeEvent &event = notification.event;
    Json::Value json(Json::objectValue);
    json["verified"] = notification.IsVerified();
    if (!notification.IsVerified()) {
        json["reason"] = notification.refusal;
    }
    json["accountId"] = event.accountId;
    json["bundleName"] = event.bundleName;
    json["containerName"] = event.containerName;
    json["databaseScopes"] = ScopesOf(notification);
    json["recordTypes"] = TypesOf(notification);
    json["properties"] = Json::Value(Json::objectValue);
    for (const auto &[name, value] : event.properties) {
        json["properties"][name] = value;
    }
    json["prepareTraceId"] = event.prepareTraceId;
    return json;
}

std::string ScopesText(const Notification &notification)
{
    return Joined(ScopesOf(notification));
}

std::string TypesText(const Notification &notification)
{
    return Joined(TypesOf(notification));
}

} // namespace NubisTool
