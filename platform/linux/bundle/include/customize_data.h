// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_CUSTOMIZE_DATA_H
#define OHOS_CUSTOMIZE_DATA_H

#include <string>

#include "parcel.h"

namespace OHOS::AppExecFwk {

// One named value of a module of the older configuration format.
struct CustomizeData : public Parcelable {
    std::string name;
    std::string value;
    std::string extra;

    bool Marshalling(Parcel &parcel) const override;
    bool ReadFromParcel(Parcel &parcel);
};

} // namespace OHOS::AppExecFwk

#endif // OHOS_CUSTOMIZE_DATA_H
