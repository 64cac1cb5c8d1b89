// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "bundle_mgr_service.h"

#include <memory>
#include <mutex>
#include <unistd.h>
#include <utility>

#include "ipc_log.h"
#include "ipc_types.h"
#include "loopback_session.h"
#include "manifest.h"
#include "registered_abilities.h"

namespace OHOS::AppExecFwk {

namespace {

// Bundles of this machine have one module.
constexpr char MODULE_NAME[] = "entry";

void AddMetadata(const std::map<std::string, std::string> &values, std::vector<CustomizeData> &list)
{
    for (const auto &value : values) {
        CustomizeData data;
        data.name = value.first;
        data.value = value.second;
        list.push_back(std::move(data));
    }
}

} // namespace

int BundleMgrService::OnRemoteRequest(uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option)
{
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_STATE;
    }
    if (code != GET_APPLICATION_INFO && code != GET_APPLICATION_INFO_V9) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    std::string name = data.ReadString();
    int32_t flags = data.ReadInt32();
    int32_t userId = data.ReadInt32();
    ApplicationInfo info;
    ErrCode result = ERR_OK;
    if (code == GET_APPLICATION_INFO_V9) {
        result = GetApplicationInfoV9(name, flags, userId, info);
    } else if (!GetApplicationInfo(name, flags, userId, info)) {
        result = ERR_INVALID_VALUE;
    }
    bool written = reply.WriteInt32(result) && (result != ERR_OK || info.Marshalling(reply));
    return written ? ERR_NONE : ERR_INVALID_DATA;
}

bool BundleMgrService::GetApplicationInfo(
    const std::string &appName, const ApplicationFlag flag, const int userId, ApplicationInfo &appInfo)
{
    return GetApplicationInfo(appName, static_cast<int32_t>(flag), static_cast<int32_t>(userId), appInfo);
}

bool BundleMgrService::GetApplicationInfo(
    const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo)
{
    return Find(appName, (flags & GET_APPLICATION_INFO_WITH_METADATA) != 0, userId, appInfo);
}

ErrCode BundleMgrService::GetApplicationInfoV9(
    const std::string &appName, int32_t flags, int32_t userId, ApplicationInfo &appInfo)
{
    auto withMetadata = static_cast<int32_t>(GetApplicationFlag::GET_APPLICATION_INFO_WITH_METADATA);
    return Find(appName, (flags & withMetadata) != 0, userId, appInfo) ? ERR_OK : ERR_INVALID_VALUE;
}

bool BundleMgrService::Find(const std::string &appName, bool withMetadata, int32_t userId, ApplicationInfo &appInfo)
{
    std::vector<CustomizeData> list;
    std::map<std::string, std::string> registered;
    if (Host::FindRegisteredMetadata(appName, userId, registered)) {
        AddMetadata(registered, list);
    } else {
        Host::Manifest manifest;
        std::string error;
        if (!Host::ReadManifest(appName, manifest, error)) {
            IPC_LOGW("no application info: %{public}s", error.c_str());
            return false;
        }
        for (const auto &ability : manifest.abilities) {
            AddMetadata(ability.metadata, list);
        }
    }
    ApplicationInfo info;
    ModuleInfo module;
    module.moduleName = MODULE_NAME;
    info.name = appName;
    info.bundleName = appName;
    info.uid = static_cast<int32_t>(geteuid());
    info.moduleInfos.push_back(std::move(module));
    if (withMetadata) {
        info.metaData[MODULE_NAME] = std::move(list);
    }
    appInfo = std::move(info);
    return true;
}

sptr<IRemoteObject> ConnectBundleMgr()
{
    static auto *mutex = new std::mutex();
    static auto *proxy = new sptr<IRemoteObject>();
    std::lock_guard<std::mutex> lock(*mutex);
    if (*proxy == nullptr || (*proxy)->IsObjectDead()) {
        auto ends = Host::Ipc::LoopbackSession::MakePair();
        // Lasts as long as the session, whose near end the proxy keeps.
        ends.second->OnDeath([far = ends.second] {});
        auto object = ends.first->ExportFarSide(new BundleMgrService());
        *proxy = ends.first->Import(object);
    }
    return *proxy;
}

} // namespace OHOS::AppExecFwk
