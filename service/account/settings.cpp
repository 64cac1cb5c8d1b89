// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "account/settings.h"

#include "util/encoding.h"

namespace DriveService {

std::string KeptSetting(Store &store, const std::string &name, const std::function<std::string()> &make)
{
    if (std::optional<std::string> kept = store.BeginRead()->Setting(name)) {
        return *kept;
    }
    std::unique_ptr<WriteSession> session = store.BeginWrite();
    // Another thread may have made it meanwhile.
    if (std::optional<std::string> kept = session->View().Setting(name)) {
        return *kept;
    }
    std::string made = make();
    session->SetSetting(name, made);
    session->Commit();
    return made;
}

std::string AccountId(Store &store)
{
    constexpr size_t ID_BYTES = 10;
    return KeptSetting(store, SETTING_ACCOUNT_ID, [] { return "local-" + HexEncode(RandomBytes(ID_BYTES)); });
}

} // namespace DriveService
