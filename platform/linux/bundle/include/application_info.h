// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_APPLICATION_INFO_H
#define OHOS_APPLICATION_INFO_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "customize_data.h"
#include "metadata.h"
#include "module_info.h"
#include "parcel.h"

namespace OHOS::AppExecFwk {

enum ApplicationFlag {
    GET_BASIC_APPLICATION_INFO = 0x00000000,
    GET_APPLICATION_INFO_WITH_PERMISSION = 0x00000008,
    GET_APPLICATION_INFO_WITH_METADATA = 0x00000040,
    GET_APPLICATION_INFO_WITH_DISABLE = 0x00000200,
    GET_ALL_APPLICATION_INFO = 0xFFFF0000,
};

// For GetApplicationInfoV9 only.
enum class GetApplicationFlag {
    GET_APPLICATION_INFO_DEFAULT = 0x00000000,
    GET_APPLICATION_INFO_WITH_PERMISSION = 0x00000001,
    GET_APPLICATION_INFO_WITH_METADATA = 0x00000002,
    GET_APPLICATION_INFO_WITH_DISABLE = 0x00000004,
};

// What the bundle manager knows about an application. A value without any lock.
struct ApplicationInfo : public Parcelable {
    std::string name;
    std::string bundleName;
    int32_t uid = -1;
    std::vector<ModuleInfo> moduleInfos;
    // Both by module name; one module fills exactly one of the two, the first for the older configuration format.
    std::map<std::string, std::vector<CustomizeData>> metaData;
    std::map<std::string, std::vector<Metadata>> metadata;

    bool Marshalling(Parcel &parcel) const override;
    // False, with this object unchanged, when the parcel holds no application info here.
    bool ReadFromParcel(Parcel &parcel);
};

} // namespace OHOS::AppExecFwk

#endif // OHOS_APPLICATION_INFO_H
