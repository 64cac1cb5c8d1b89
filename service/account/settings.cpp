// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "account/settings.h"

#include "util/encoding.h"

namespace DriveService {

std::string KeptSetting(Store &store, const std::string &name, const std::function<std::string()> &make,
    const std::function<bool(const std::string &)> &isCurrent)
{
    auto find = [&](ReadSession &view) {
        std::optional<std::string> kept = view.Setting(name);
        return kept && (isCurrent == nullptr || isCurrent(*kept)) ? kept : std::nullopt;
    };
    if (std::optional<std::string> kept = find(*store.BeginRead())) {
        return *kept;
    }
    std::unique_ptr<WriteSession> session = store.BeginWrite();
    // Another thread may have made it meanwhile.
    if (std::optional<std::string> kept = find(session->View())) {
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
