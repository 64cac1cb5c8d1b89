// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_SYSTEM_ABILITY_DEFINITION_H
#define OHOS_SYSTEM_ABILITY_DEFINITION_H

namespace OHOS {

enum {
    BUNDLE_MGR_SERVICE_SYS_ABILITY_ID = 401,
};

} // namespace OHOS

#endif // OHOS_SYSTEM_ABILITY_DEFINITION_H
