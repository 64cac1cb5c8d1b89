// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_METADATA_H
#define OHOS_METADATA_H

#include <cstdint>
#include <string>

#include "parcel.h"

namespace OHOS::AppExecFwk {

// One named value of a module of the newer configuration format.
struct Metadata : public Parcelable {
    uint32_t valueId = 0;
    std::string name;
    std::string value;
    std::string resource;

    bool Marshalling(Parcel &parcel) const override;
    bool ReadFromParcel(Parcel &parcel);
};

} // namespace OHOS::AppExecFwk

#endif // OHOS_METADATA_H
