// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "element_name.h"

#include <memory>

namespace OHOS::AppExecFwk {

ElementName::ElementName(const std::string &deviceId, const std::string &bundleName, const std::string &abilityName,
    const std::string &moduleName)
    : deviceId_(deviceId), bundleName_(bundleName), abilityName_(abilityName), moduleName_(moduleName)
{}

void ElementName::SetDeviceID(const std::string &id)
{
    deviceId_ = id;
}

std::string ElementName::GetDeviceID() const
{
    return deviceId_;
}

void ElementName::SetBundleName(const std::string &name)
{
    bundleName_ = name;
}

std::string ElementName::GetBundleName() const
{
    return bundleName_;
}

void ElementName::SetAbilityName(const std::string &name)
{
    abilityName_ = name;
}

std::string ElementName::GetAbilityName() const
{
    return abilityName_;
}

void ElementName::SetModuleName(const std::string &name)
{
    moduleName_ = name;
}

std::string ElementName::GetModuleName() const
{
    return moduleName_;
}

bool ElementName::Marshalling(Parcel &parcel) const
{
    return parcel.WriteString(deviceId_) && parcel.WriteString(bundleName_) && parcel.WriteString(abilityName_) &&
           parcel.WriteString(moduleName_);
}

ElementName *ElementName::Unmarshalling(Parcel &parcel)
{
    auto element = std::make_unique<ElementName>();
    if (!parcel.ReadString(element->deviceId_) || !parcel.ReadString(element->bundleName_) ||
        !parcel.ReadString(element->abilityName_) || !parcel.ReadString(element->moduleName_)) {
        return nullptr;
    }
    return element.release();
}

} // namespace OHOS::AppExecFwk
