// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_MODULE_INFO_H
#define OHOS_MODULE_INFO_H

#include <string>
#include <vector>

#include "parcel.h"

namespace OHOS::AppExecFwk {

struct ModuleInfo : public Parcelable {
    std::string moduleName;
    std::string moduleSourceDir;
    std::vector<std::string> preloads;

    bool Marshalling(Parcel &parcel) const override;
    bool ReadFromParcel(Parcel &parcel);
};

} // namespace OHOS::AppExecFwk

#endif // OHOS_MODULE_INFO_H
