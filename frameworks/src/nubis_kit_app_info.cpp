// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nubis_kit.h"

#include <utility>

#include <json/value.h>

#include "json_helper.h"
#include "log.h"
#include "nb_container.h"
#include "nb_database.h"

// The requests of the app catalogue, its cache, and the schemas of live databases.
namespace Nubis {
namespace {
Json::Value MakeCatalogueRequest(const char *function, const std::vector<std::string> &bundleNames, int syncType)
{
    Json::Value request(Json::objectValue);
    request["function"] = function;
    Json::Value &names = request["bundleName"] = Json::Value(Json::arrayValue);
    for (const auto &bundleName : bundleNames) {
        names.append(bundleName);
    }
    request["syncDemon"] = std::to_string(syncType);
    return request;
}
} // namespace

NBError NubisNative::GetCloudAppInfo(
    const std::vector<std::string> &bundleNames, std::map<std::string, NBAppInfo> &appInfos)
{
    return InnerGetCloudAppInfo(bundleNames, appInfos, DATA_KIND);
}

NBError NubisNative::GetCloudFileAppInfo(
    const std::vector<std::string> &bundleNames, std::map<std::string, NBAppInfo> &appInfos)
{
    return InnerGetCloudAppInfo(bundleNames, appInfos, FILE_KIND);
}

NBError NubisNative::InnerGetCloudAppInfo(
    const std::vector<std::string> &bundleNames, std::map<std::string, NBAppInfo> &appInfos, int syncType)
{
    Json::Value request = MakeCatalogueRequest("GetCloudAppInfo", bundleNames, syncType);
    Json::Value reply;
    NBError error = SendInPlace(request, reply, REQUEST_TIMEOUT);
    if (error.HasError()) {
        return error;
    }
    std::map<std::string, NBAppInfo> received;
    error = GetAppInfoFromJson(reply, received);
    if (error.HasError()) {
        return error;
    }
    auto &cache = AppInfosOf(syncType);
    {
        std::lock_guard<std::mutex> lock(cache.mutex);
        for (const auto &[bundleName, fresh] : received) {
            const auto cached = cache.entries.find(bundleName);
            if (cached != cache.entries.end() && cached->second.schemaGroupVersion != fresh.schemaGroupVersion) {
                const NBContainerInfo &container = cached->second.defaultContainer;
                if (container.schema.version != fresh.defaultContainer.schema.version) {
                    UpdateDatabaseSchema(
                        container.bundleName, container.containerName, fresh.defaultContainer.schema, syncType);
                }
                UpdateShareContainerSchema(cached->second.sharedContainers, fresh.sharedContainers, syncType);
            }
            cache.entries.insert_or_assign(bundleName, fresh);
        }
    }
    for (auto &[bundleName, fresh] : received) {
        appInfos.insert_or_assign(bundleName, std::move(fresh));
    }
    return error;
}

void NubisNative::UpdateShareContainerSchema(
    const std::vector<NBContainerInfo> &cached, const std::vector<NBContainerInfo> &fresh, int syncType)
{
    for (const auto &freshContainer : fresh) {
        for (const auto &container : cached) {
            if (container.containerName != freshContainer.containerName) {
                continue;
            }
            if (container.schema.version != freshContainer.schema.version) {
                UpdateDatabaseSchema(container.bundleName, container.containerName, freshContainer.schema, syncType);
            }
            break;
        }
    }
}

void NubisNative::UpdateDatabaseSchema(
    const std::string &bundleName, const std::string &containerName, const NBSchema &schema, int syncType)
{
    auto &containers = ContainersOf(syncType);
    std::lock_guard<std::mutex> lock(containers.mutex);
    const auto found = containers.entries.find(bundleName + containerName);
    if (found == containers.entries.end()) {
        return;
    }
    for (const auto &database : {found->second->GetPrivateDatabase(), found->second->GetSharedDatabase()}) {
        if (database != nullptr) {
            database->UpdateSchema(schema);
        }
    }
}

const NBContainerInfo *NubisNative::FindContainer(const NBAppInfo &appInfo, const std::string &containerName)
{
    if (appInfo.defaultContainer.containerName == containerName) {
        return &appInfo.defaultContainer;
    }
    for (const auto &container : appInfo.sharedContainers) {
        if (container.containerName == containerName) {
            return &container;
        }
    }
    return nullptr;
}

bool NubisNative::GetSchemaInfo(
    const std::string &bundleName, const std::string &containerName, NBSchema &schema, int syncType)
{
    auto &appInfos = AppInfosOf(syncType);
    std::lock_guard<std::mutex> lock(appInfos.mutex);
    const auto found = appInfos.entries.find(bundleName);
    if (found == appInfos.entries.end()) {
        NB_LOGE(
            "Get schema failed, can not find bundle: %{public}s, syncType:%{public}d", bundleName.c_str(), syncType);
        return false;
    }
    const NBContainerInfo *container = FindContainer(found->second, containerName);
    if (container == nullptr) {
        NB_LOGE("Get schema failed, can not find container: %{public}s, bundleName:%{public}s, syncType:%{public}d",
            containerName.c_str(), bundleName.c_str(), syncType);
        return false;
    }
    schema.recordTypes = container->schema.recordTypes;
    schema.schemaData = container->schema.schemaData;
    return true;
}

NBError NubisNative::GetCloudAppSwitches(
    const std::vector<std::string> &bundleNames, std::map<std::string, NBAppSwitchStatus> &switches)
{
    return InnerGetCloudAppSwitches(bundleNames, switches, DATA_KIND);
}

NBError NubisNative::GetCloudFileAppSwitches(
    const std::vector<std::string> &bundleNames, std::map<std::string, NBAppSwitchStatus> &switches)
{
    return InnerGetCloudAppSwitches(bundleNames, switches, FILE_KIND);
}

NBError NubisNative::InnerGetCloudAppSwitches(
    const std::vector<std::string> &bundleNames, std::map<std::string, NBAppSwitchStatus> &switches, int syncType)
{
    Json::Value request = MakeCatalogueRequest("GetCloudAppSwitches", bundleNames, syncType);
    Json::Value reply;
    NBError error = SendInPlace(request, reply, REQUEST_TIMEOUT);
    return error.HasError() ? error : GetAppSwitchsFromJson(reply, switches);
}

NBError NubisNative::GetCloudAppBriefInfo(
    int index, std::vector<NBAppBriefInfo> &infos, bool &hasMore, int &nextIndex, NBUploadSize &uploadSize)
{
    Json::Value request(Json::objectValue);
    request["function"] = "getCloudAppBriefInfo";
    request["index"] = index;
    Json::Value reply;
    NBError error = SendInPlace(request, reply, REQUEST_TIMEOUT);
    return error.HasError() ? error : GetBriefInfoFromJson(reply, infos, hasMore, nextIndex, uploadSize);
}

NBError NubisNative::GetAppConfigParams(const std::string &bundleName, std::map<std::string, std::string> &params)
{
    Json::Value request(Json::objectValue);
    request["function"] = "getAppConfigParams";
    request["bundleName"] = bundleName;
    Json::Value reply;
    NBError error = SendInPlace(request, reply, REQUEST_TIMEOUT);
    if (error.HasError()) {
        return error;
    }
    if (!reply.isObject()) {
        return NBError(NB_LOCAL_BAD_DATA);
    }
    for (auto member = reply.begin(); member != reply.end(); ++member) {
        const std::string name = member.name();
        if (member->isString()) {
            params.insert_or_assign(name, member->asString());
        } else if (name != "code") {
            NB_LOGE("bundle:%{public}s, config params %{public}s is not string", bundleName.c_str(), name.c_str());
        }
    }
    return error;
}
} // namespace Nubis
