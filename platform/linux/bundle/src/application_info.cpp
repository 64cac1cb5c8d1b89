// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "application_info.h"

#include <utility>

namespace OHOS::AppExecFwk {

namespace {

// Bounds what a broken parcel can make us build.
constexpr uint32_t MAX_ITEMS = 4096;

template <typename Item>
bool WriteList(Parcel &parcel, const std::vector<Item> &list)
{
    if (!parcel.WriteUint32(static_cast<uint32_t>(list.size()))) {
        return false;
    }
    for (const Item &item : list) {
        if (!item.Marshalling(parcel)) {
            return false;
        }
    }
    return true;
}

template <typename Item>
bool ReadList(Parcel &parcel, std::vector<Item> &list)
{
    uint32_t count = 0;
    if (!parcel.ReadUint32(count) || count > MAX_ITEMS) {
        return false;
    }
    for (uint32_t i = 0; i < count; ++i) {
        Item item;
        if (!item.ReadFromParcel(parcel)) {
            return false;
        }
        list.push_back(std::move(item));
    }
    return true;
}

template <typename Item>
bool WriteMap(Parcel &parcel, const std::map<std::string, std::vector<Item>> &map)
{
    if (!parcel.WriteUint32(static_cast<uint32_t>(map.size()))) {
        return false;
    }
    for (const auto &entry : map) {
        if (!parcel.WriteString(entry.first) || !WriteList(parcel, entry.second)) {
            return false;
        }
    }
    return true;
}

template <typename Item>
bool ReadMap(Parcel &parcel, std::map<std::string, std::vector<Item>> &map)
{
    uint32_t count = 0;
    if (!parcel.ReadUint32(count) || count > MAX_ITEMS) {
        return false;
    }
    for (uint32_t i = 0; i < count; ++i) {
        std::string name;
        if (!parcel.ReadString(name) || !ReadList(parcel, map[name])) {
            return false;
        }
    }
    return true;
}

} // namespace

bool CustomizeData::Marshalling(Parcel &parcel) const
{
    return parcel.WriteString(name) && parcel.WriteString(value) && parcel.WriteString(extra);
}

bool CustomizeData::ReadFromParcel(Parcel &parcel)
{
    return parcel.ReadString(name) && parcel.ReadString(value) && parcel.ReadString(extra);
}

bool Metadata::Marshalling(Parcel &parcel) const
{
    return parcel.WriteUint32(valueId) && parcel.WriteString(name) && parcel.WriteString(value) &&
           parcel.WriteString(resource);
}

bool Metadata::ReadFromParcel(Parcel &parcel)
{
    return parcel.ReadUint32(valueId) && parcel.ReadString(name) && parcel.ReadString(value) &&
           parcel.ReadString(resource);
}

bool ModuleInfo::Marshalling(Parcel &parcel) const
{
    if (!parcel.WriteString(moduleName) || !parcel.WriteString(moduleSourceDir) ||
        !parcel.WriteUint32(static_cast<uint32_t>(preloads.size()))) {
        return false;
    }
    for (const std::string &preload : preloads) {
        if (!parcel.WriteString(preload)) {
            return false;
        }
    }
    return true;
}

bool ModuleInfo::ReadFromParcel(Parcel &parcel)
{
    uint32_t count = 0;
    if (!parcel.ReadString(moduleName) || !parcel.ReadString(moduleSourceDir) || !parcel.ReadUint32(count) ||
        count > MAX_ITEMS) {
        return false;
    }
    preloads.resize(count);
    for (std::string &preload : preloads) {
        if (!parcel.ReadString(preload)) {
            return false;
        }
    }
    return true;
}

bool ApplicationInfo::Marshalling(Parcel &parcel) const
{
    return parcel.WriteString(name) && parcel.WriteString(bundleName) && parcel.WriteInt32(uid) &&
           WriteList(parcel, moduleInfos) && WriteMap(parcel, metaData) && WriteMap(parcel, metadata);
}

bool ApplicationInfo::ReadFromParcel(Parcel &parcel)
{
    ApplicationInfo info;
    if (!parcel.ReadString(info.name) || !parcel.ReadString(info.bundleName) || !parcel.ReadInt32(info.uid) ||
        !ReadList(parcel, info.moduleInfos) || !ReadMap(parcel, info.metaData) || !ReadMap(parcel, info.metadata)) {
        return false;
    }
    *this = std::move(info);
    return true;
}

} // namespace OHOS::AppExecFwk
