// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "sys_config.h"

#include <map>
#include <new>

#include "json_helper.h"
#include "log.h"
#include "nubis_kit.h"
#include "urgent_scope.h"
#include "wall_clock.h"

namespace Nubis {
namespace {
constexpr int64_t REFRESH_SECONDS = 86400;
constexpr int DEFAULT_TIMEOUT = -1;
constexpr int32_t SWITCHED_ON = 1;
// Services also send "sysTimeStamp", which is no parameter of ours.
constexpr const char *QUIC_DOMAIN_LIST = "enableQuicDomainList";
constexpr const char *FLOW_CONTROL = "flowControl";
constexpr const char *FLOW_CONTROL_WHITE_LIST = "flowControlWhiteList";
constexpr const char *USE_ASYNC_IPC = "ohNubisUseAsyncIPC";
constexpr const char *LIST_SEPARATOR = ",";

// Never destroyed: requests may be under way while the process ends.
struct ConfigRegistry {
    std::mutex mutex;
    std::map<int, std::shared_ptr<SysConfig>> configs;
};

ConfigRegistry &GetRegistry()
{
    static auto *registry = new ConfigRegistry;
    return *registry;
}
} // namespace

std::shared_ptr<SysConfig> SysConfig::GetInstance(int userId)
{
    auto &registry = GetRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    auto &config = registry.configs[userId];
    if (config == nullptr) {
        config.reset(new (std::nothrow) SysConfig(userId));
    }
    return config;
}

SysConfig::SysConfig(int userId) : userId_(userId)
{}

bool SysConfig::GetUseAsyncIpc()
{
    CheckAndUpdConfig();
    std::lock_guard<std::mutex> lock(valueMutex_);
    return useAsyncIpc_ != 0;
}

void SysConfig::CheckAndUpdConfig()
{
    if (!isLoaded_) {
        std::lock_guard<ffrt::mutex> lock(firstLoadMutex_);
        if (!isLoaded_) {
            GetConfigFromCloud();
            isLoaded_ = true;
        }
    }
    const int64_t last = lastConfigTime_;
    const int64_t now = WallClock::NowSeconds();
    if (now - REFRESH_SECONDS <= last && last <= now) {
        return;
    }
    NB_LOGI("get cloud config from cloud last cfg time:%{public}lu, now time:%{public}lu",
        static_cast<unsigned long>(last), static_cast<unsigned long>(now));
    if (!GetConfigFromCloud()) {
        isRefreshFailed_ = true;
    }
}

bool SysConfig::GetConfigFromCloud()
{
    const auto nubis = NubisNative::GetInstance(userId_);
    if (nubis == nullptr) {
        NB_LOGE("get config from cloud failed, nubis is nullptr");
        return false;
    }
    Json::Value request(Json::objectValue);
    request["function"] = "getSysParameters";
    Json::Value reply;
    {
        // Other requests wait for what this one brings before they take their slots.
        const UrgentScope urgent;
        if (nubis->SendDataToCloudSrv(request, reply, DEFAULT_TIMEOUT).HasError()) {
            NB_LOGE("get config from cloud failed, send data to cloud srv failed");
            return false;
        }
    }
    const Json::Value *parameters = JsonHelper::FindMember(reply, "parameters");
    if (parameters == nullptr || !parameters->isArray()) {
        NB_LOGE("get config fail, parse sys parameters fail, no sys parameters node");
        return false;
    }
    lastConfigTime_ = WallClock::NowSeconds();
    std::lock_guard<std::mutex> lock(valueMutex_);
    for (const auto &parameter : *parameters) {
        if (parameter.isObject()) {
            StoreParameter(parameter);
        }
    }
    return true;
}

// With valueMutex_ held.
void SysConfig::StoreParameter(const Json::Value &parameter)
{
    const std::string key = JsonHelper::GetStringFromJson(parameter, "key");
    const Json::Value *member = JsonHelper::FindMember(parameter, "value");
    const Json::Value value = member == nullptr ? Json::Value() : *member;
    if (key == QUIC_DOMAIN_LIST) {
        quicDomainList_ = JsonHelper::JsonArrayToString(value, LIST_SEPARATOR);
    } else if (key == FLOW_CONTROL) {
        flowSpeedLimit_ = JsonHelper::GetUIntFromJson(value, "flowSpeedLimit");
        flowThreshold_ = JsonHelper::GetUIntFromJson(value, "flowThreshold");
    } else if (key == FLOW_CONTROL_WHITE_LIST) {
        flowControlWhiteList_ = JsonHelper::JsonArrayToString(value, LIST_SEPARATOR);
    } else if (key == USE_ASYNC_IPC) {
        useAsyncIpc_ = JsonHelper::GetIntFromJson(parameter, "value", SWITCHED_ON);
    } else {
        NB_LOGE("unknown sys parameters key:%{public}s", key.c_str());
    }
}

std::string SysConfig::GetQuicDomainList() const
{
    std::lock_guard<std::mutex> lock(valueMutex_);
    return quicDomainList_;
}

uint32_t SysConfig::GetFlowSpeedLimit() const
{
    std::lock_guard<std::mutex> lock(valueMutex_);
    return flowSpeedLimit_;
}

uint32_t SysConfig::GetFlowThreshold() const
{
    std::lock_guard<std::mutex> lock(valueMutex_);
    return flowThreshold_;
}

std::string SysConfig::GetFlowControlWhiteList() const
{
    std::lock_guard<std::mutex> lock(valueMutex_);
    return flowControlWhiteList_;
}

bool SysConfig::IsRefreshFailed() const
{
    return isRefreshFailed_;
}
} // namespace Nubis
