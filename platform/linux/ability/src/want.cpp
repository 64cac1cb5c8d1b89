// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "want.h"

#include <memory>

namespace OHOS::AAFwk {

Want &Want::SetAction(const std::string &action)
{
    action_ = action;
    return *this;
}

std::string Want::GetAction() const
{
    return action_;
}

Want &Want::SetElementName(const std::string &bundleName, const std::string &abilityName)
{
    element_.SetBundleName(bundleName);
    element_.SetAbilityName(abilityName);
    return *this;
}

Want &Want::SetElementName(const std::string &deviceId, const std::string &bundleName, const std::string &abilityName,
    const std::string &moduleName)
{
    element_ = AppExecFwk::ElementName(deviceId, bundleName, abilityName, moduleName);
    return *this;
}

Want &Want::SetElement(const OHOS::AppExecFwk::ElementName &element)
{
    element_ = element;
    return *this;
}

OHOS::AppExecFwk::ElementName Want::GetElement() const
{
    return element_;
}

bool Want::Marshalling(Parcel &parcel) const
{
    return parcel.WriteString(action_) && element_.Marshalling(parcel);
}

Want *Want::Unmarshalling(Parcel &parcel)
{
    auto want = std::make_unique<Want>();
    if (!parcel.ReadString(want->action_)) {
        return nullptr;
    }
    std::unique_ptr<AppExecFwk::ElementName> element(AppExecFwk::ElementName::Unmarshalling(parcel));
    if (element == nullptr) {
        return nullptr;
    }
    want->element_ = *element;
    return want.release();
}

} // namespace OHOS::AAFwk
