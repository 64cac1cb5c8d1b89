// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_ELEMENT_NAME_H
#define OHOS_ELEMENT_NAME_H

#include <string>

#include "parcel.h"

namespace OHOS::AppExecFwk {

// Names an ability: on which device, of which bundle. A value without any lock.
class ElementName : public Parcelable {
public:
    ElementName() = default;
    ElementName(const std::string &deviceId, const std::string &bundleName, const std::string &abilityName,
        const std::string &moduleName = "");

    void SetDeviceID(const std::string &id);
    std::string GetDeviceID() const;
    void SetBundleName(const std::string &name);
    std::string GetBundleName() const;
    void SetAbilityName(const std::string &name);
    std::string GetAbilityName() const;
    void SetModuleName(const std::string &name);
    std::string GetModuleName() const;

    // Four strings: device, bundle, ability, module.
    bool Marshalling(Parcel &parcel) const override;
    // Null when the parcel holds no element name here; otherwise the caller owns it.
    static ElementName *Unmarshalling(Parcel &parcel);

private:
    std::string deviceId_;
    std::string bundleName_;
    std::string abilityName_;
    std::string moduleName_;
};

} // namespace OHOS::AppExecFwk

#endif // OHOS_ELEMENT_NAME_H
