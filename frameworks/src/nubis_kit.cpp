// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nubis_kit.h"

#include <new>
#include <utility>

#include "drive_service_proxy.h"
#include "log.h"
#include "nb_container.h"
#include "nb_report.h"

// The kit instances and the registry of containers.
namespace Nubis {
namespace {
// Callers only compare it.
constexpr int NET_CONNECTION = 8;

// Never destroyed: workers may still use their kits while the process ends.
struct KitRegistry {
    std::mutex nubisMutex_;
    std::map<int, std::shared_ptr<NubisNative>> nubisKits_;
};

KitRegistry &GetRegistry()
{
    static auto *registry = new KitRegistry;
    return *registry;
}
} // namespace

std::shared_ptr<NubisNative> NubisNative::GetInstance(int userId)
{
    struct EnableMakeShared : public NubisNative {
        explicit EnableMakeShared(int user) : NubisNative(user)
        {}
    };
    auto &registry = GetRegistry();
    std::lock_guard<std::mutex> lock(registry.nubisMutex_);
    const auto found = registry.nubisKits_.find(userId);
    if (found != registry.nubisKits_.end()) {
        return found->second;
    }
    auto nubis = std::make_shared<EnableMakeShared>(userId);
    registry.nubisKits_.insert_or_assign(userId, nubis);
    return nubis;
}

std::shared_ptr<NubisNative> NubisNative::GetInstance(int userId, NBCloudSyncDemon demon)
{
    auto nubis = GetInstance(userId);
    nubis->syncDemon_ = demon;
    return nubis;
}

NubisNative::NubisNative(int userId) : userId_(userId), proxy_(new (std::nothrow) DriveServiceProxy(userId))
{
    if (proxy_ == nullptr) {
        NB_LOGE("new proxy failed, malloc failed");
    }
}

NubisNative::~NubisNative()
{
    delete proxy_;
}

NubisNative::Containers &NubisNative::ContainersOf(int syncType)
{
    return syncType == FILE_KIND ? fileContainers_ : containers_;
}

NubisNative::AppInfos &NubisNative::AppInfosOf(int syncType)
{
    return syncType == FILE_KIND ? fileAppInfos_ : appInfos_;
}

std::shared_ptr<NBContainer> NubisNative::GetDefaultContainer(const std::string &bundleName)
{
    return InnerGetDefaultContainer(bundleName, DATA_KIND);
}

std::shared_ptr<NBContainer> NubisNative::GetDefaultFileContainer(const std::string &bundleName)
{
    NB_LOGI("GetDefaultFileContainer start");
    const NBCloudSyncDemon demon = syncDemon_;
    if (demon != NB_SYNC_DEMON_FILE) {
        NB_LOGE("param error, syncDemon:%{public}d", static_cast<int>(demon));
        return nullptr;
    }
    return InnerGetDefaultContainer(bundleName, FILE_KIND);
}

std::shared_ptr<NBContainer> NubisNative::GetContainer(const std::string &bundleName, const std::string &containerName)
{
    return InnerGetContainer(bundleName, containerName, DATA_KIND);
}

std::shared_ptr<NBContainer> NubisNative::GetFileContainer(
    const std::string &bundleName, const std::string &containerName)
{
    NB_LOGI("GetFileContainer start");
    const NBCloudSyncDemon demon = syncDemon_;
    if (demon != NB_SYNC_DEMON_FILE) {
        NB_LOGE("param error, syncDemon:%{public}d", static_cast<int>(demon));
        return nullptr;
    }
    return InnerGetContainer(bundleName, containerName, FILE_KIND);
}

std::shared_ptr<NBContainer> NubisNative::InnerGetDefaultContainer(const std::string &bundleName, int syncType)
{
    std::string containerName;
    {
        auto &appInfos = AppInfosOf(syncType);
        std::lock_guard<std::mutex> lock(appInfos.mutex);
        const auto found = appInfos.entries.find(bundleName);
        if (found != appInfos.entries.end()) {
            containerName = found->second.defaultContainer.containerName;
        }
    }
    if (containerName.empty()) {
        std::map<std::string, NBAppInfo> fetched;
        if (InnerGetCloudAppInfo({bundleName}, fetched, syncType).HasError()) {
            return nullptr;
        }
        const auto found = fetched.find(bundleName);
        if (found == fetched.end()) {
            return nullptr;
        }
        containerName = found->second.defaultContainer.containerName;
    }
    return FindOrCreateContainer(bundleName, containerName, syncType);
}

std::shared_ptr<NBContainer> NubisNative::InnerGetContainer(
    const std::string &bundleName, const std::string &containerName, int syncType)
{
    if (!CheckContainerName(bundleName, containerName, syncType)) {
        NB_LOGE("Get container failed, check container name failed, bundleName:%{public}s, "
                "containerName:%{public}s, type:%{public}d",
            bundleName.c_str(), containerName.c_str(), syncType);
        return nullptr;
    }
    return FindOrCreateContainer(bundleName, containerName, syncType);
}

std::shared_ptr<NBContainer> NubisNative::FindOrCreateContainer(
    const std::string &bundleName, const std::string &containerName, int syncType)
{
    const std::string key = bundleName + containerName;
    auto &containers = ContainersOf(syncType);
    {
        std::lock_guard<std::mutex> lock(containers.mutex);
        const auto found = containers.entries.find(key);
        if (found != containers.entries.end()) {
            return found->second;
        }
    }
    // Init asks the service, so it runs without the lock; of threads that do this at once the first to store wins.
    auto container = std::make_shared<NBContainer>(bundleName, containerName, shared_from_this(), syncType);
    container->Init();
    std::lock_guard<std::mutex> lock(containers.mutex);
    return containers.entries.try_emplace(key, std::move(container)).first->second;
}

bool NubisNative::CheckContainerName(const std::string &bundleName, const std::string &containerName, int syncType)
{
    {
        auto &appInfos = AppInfosOf(syncType);
        std::lock_guard<std::mutex> lock(appInfos.mutex);
        const auto found = appInfos.entries.find(bundleName);
        if (found != appInfos.entries.end()) {
            return FindContainer(found->second, containerName) != nullptr;
        }
    }
    std::map<std::string, NBAppInfo> fetched;
    if (InnerGetCloudAppInfo({bundleName}, fetched, syncType).HasError()) {
        NB_LOGE("Check container name failed, Get CloudAppinfo failed, bundlename:%{public}s, syncType:%{public}d",
            bundleName.c_str(), syncType);
        return false;
    }
    const auto found = fetched.find(bundleName);
    return found != fetched.end() && FindContainer(found->second, containerName) != nullptr;
}

void NubisNative::ReleaseDefaultContainer(const std::string &bundleName)
{
    InnerReleaseDefaultContainer(bundleName, DATA_KIND);
}

void NubisNative::ReleaseFileDefaultContainer(const std::string &bundleName)
{
    InnerReleaseDefaultContainer(bundleName, FILE_KIND);
}

void NubisNative::ReleaseContainer(const std::string &bundleName, const std::string &containerName)
{
    InnerReleaseContainer(bundleName, containerName, DATA_KIND);
}

void NubisNative::ReleaseFileContainer(const std::string &bundleName, const std::string &containerName)
{
    InnerReleaseContainer(bundleName, containerName, FILE_KIND);
}

void NubisNative::InnerReleaseDefaultContainer(const std::string &bundleName, int syncType)
{
    NB_LOGI("release default container bundleName:%{public}s, syncType:%{public}d", bundleName.c_str(), syncType);
    std::string containerName;
    {
        auto &appInfos = AppInfosOf(syncType);
        std::lock_guard<std::mutex> lock(appInfos.mutex);
        const auto found = appInfos.entries.find(bundleName);
        if (found == appInfos.entries.end()) {
            return;
        }
        containerName = found->second.defaultContainer.containerName;
        appInfos.entries.erase(found);
    }
    DropContainer(bundleName + containerName, syncType);
}

void NubisNative::InnerReleaseContainer(const std::string &bundleName, const std::string &containerName, int syncType)
{
    NB_LOGI("release container bundleName:%{public}s, containerName:%{public}s, syncType:%{public}d",
        bundleName.c_str(), containerName.c_str(), syncType);
    {
        auto &appInfos = AppInfosOf(syncType);
        std::lock_guard<std::mutex> lock(appInfos.mutex);
        appInfos.entries.erase(bundleName);
    }
    DropContainer(bundleName + containerName, syncType);
}

void NubisNative::DropContainer(const std::string &key, int syncType)
{
    auto &containers = ContainersOf(syncType);
    std::lock_guard<std::mutex> lock(containers.mutex);
    const auto found = containers.entries.find(key);
    if (found != containers.entries.end()) {
        found->second->Release();
        containers.entries.erase(found);
    }
}

NBCloudSyncDemon NubisNative::GetCloudSyncDemon() const
{
    std::lock_guard<std::mutex> lock(userInfoMutex_);
    return syncDemon_;
}

std::string NubisNative::GetCloudSyncSaName() const
{
    switch (GetCloudSyncDemon()) {
        case NB_SYNC_DEMON_DATA:
            return "cloudData_notifyDataChange";
        case NB_SYNC_DEMON_FILE:
            return "cloudFile_notifyDataChange";
        case NB_SYNC_DEMON_ASSET:
            return "cloudAsset_notifyDataChange";
        default:
            return "";
    }
}

int NubisNative::GetUserId() const
{
    return userId_;
}

int NubisNative::CheckNetConnection() const
{
    return NET_CONNECTION;
}

std::shared_ptr<NBReport> NubisNative::GetReport() const
{
    return std::make_shared<NBReport>(userId_, syncDemon_.load());
}
} // namespace Nubis
