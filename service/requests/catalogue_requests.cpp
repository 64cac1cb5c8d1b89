// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "requests/handlers.h"

#include <algorithm>
#include <limits>

#include "records/limits.h"
#include "util/failure.h"

namespace DriveService {

namespace {

constexpr size_t BRIEFS_PER_PAGE = 100;

// What clients may upload at once, told with the brief information.
constexpr unsigned UPLOAD_BATCH_NUMBER = 30;
constexpr unsigned UPLOAD_BODY_BYTES = 1572864;

// The bundles of the request that the catalogue has for the request's demon, in the request's order. Clients tell an
// unknown bundle by its absence.
std::vector<std::shared_ptr<const AppEntry>> FindApps(ServiceContext &context, const Request &request)
{
    std::string demon = request.TextOr("syncDemon", "0");
    std::vector<std::shared_ptr<const AppEntry>> apps;
    for (const std::string &bundleName : request.Texts("bundleName", MAX_BUNDLES)) {
        std::shared_ptr<const AppEntry> app = context.catalogue.Find(bundleName);
        if (app && app->demons.count(demon) > 0) {
            apps.push_back(std::move(app));
        }
    }
    return apps;
}

} // namespace

Json::Value GetCloudAppInfo(ServiceContext &context, const Request &request)
{
    Json::Value reply = Success();
    Json::Value &list = reply["appInfo"] = Json::Value(Json::arrayValue);
    for (const auto &app : FindApps(context, request)) {
        list.append(app->reply);
    }
    return reply;
}

Json::Value GetCloudAppSwitches(ServiceContext &context, const Request &request)
{
    Json::Value reply = Success();
    Json::Value &list = reply["appSwitchStatus"] = Json::Value(Json::arrayValue);
    for (const auto &app : FindApps(context, request)) {
        Json::Value item(Json::objectValue);
        item["bundleName"] = app->bundleName;
        item["switchStatus"] = app->switchStatus;
        list.append(std::move(item));
    }
    return reply;
}

Json::Value GetCloudAppBriefInfo(ServiceContext &context, const Request &request)
{
    constexpr int64_t LAST_INDEX = std::numeric_limits<int32_t>::max();
    auto page = static_cast<size_t>(request.Integer("index", 0, LAST_INDEX));
    std::vector<std::shared_ptr<const AppEntry>> apps = context.catalogue.All();
    size_t begin = std::min(apps.size(), page * BRIEFS_PER_PAGE);
    size_t end = std::min(apps.size(), begin + BRIEFS_PER_PAGE);
    bool hasMore = end < apps.size();
    Json::Value reply = Success();
    Json::Value &list = reply["appBriefInfos"] = Json::Value(Json::arrayValue);
    for (size_t i = begin; i < end; ++i) {
        Json::Value item(Json::objectValue);
        item["bundleName"] = apps[i]->bundleName;
        item["appId"] = apps[i]->appId;
        item["schemaGroupVersion"] = Json::Int64(apps[i]->schemaGroupVersion);
        item["enableCloud"] = apps[i]->enableCloud;
        item["switchStatus"] = apps[i]->switchStatus;
        item["verifyRemainSpace"] = apps[i]->verifyRemainSpace;
        list.append(std::move(item));
    }
    reply["hasMore"] = hasMore;
    reply["nextIndex"] = static_cast<int>(hasMore ? page + 1 : 0);
    reply["maxBatchNumber"] = UPLOAD_BATCH_NUMBER;
    reply["maxBodySize"] = UPLOAD_BODY_BYTES;
    return reply;
}

Json::Value GetAppConfigParams(ServiceContext &context, const Request &request)
{
    Json::Value reply = Success();
    for (const auto &[name, value] : FindApp(context, request)->configParams) {
        reply[name] = value;
    }
    return reply;
}

} // namespace DriveService
