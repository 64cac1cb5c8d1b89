// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_WANT_H
#define OHOS_WANT_H

#include <string>

#include "element_name.h"
#include "parcel.h"

namespace OHOS::AAFwk {

// What a caller wants to reach: an ability, and an action. A value without any lock.
class Want final : public Parcelable {
public:
    Want() = default;

    Want &SetAction(const std::string &action);
    std::string GetAction() const;
    Want &SetElementName(const std::string &bundleName, const std::string &abilityName);
    Want &SetElementName(const std::string &deviceId, const std::string &bundleName, const std::string &abilityName,
        const std::string &moduleName = "");
    Want &SetElement(const OHOS::AppExecFwk::ElementName &element);
    OHOS::AppExecFwk::ElementName GetElement() const;

    // The action, then the element.
    bool Marshalling(Parcel &parcel) const override;
    // Null when the parcel holds no want here; otherwise the caller owns it.
    static Want *Unmarshalling(Parcel &parcel);

private:
    std::string action_;
    OHOS::AppExecFwk::ElementName element_;
};

} // namespace OHOS::AAFwk

#endif // OHOS_WANT_H
