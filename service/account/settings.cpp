// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "account/settings.h"

#include "util/encoding.h"

namespace DriveService {

namespace {

using Make = std::function<std::string()>;
using IsCurrent = std::function<bool(const std::string &)>;

std::optional<std::string> FindKept(ReadSession &view, const std::string &name, const IsCurrent &isCurrent)
{
    std::optional<std::string> kept = view.Setting(name);
    return kept && (isCurrent == nullptr || isCurrent(*kept)) ? kept : std::nullopt;
}

std::string MakeAccountId()
{
    constexpr size_t ID_BYTES = 10;
    return "local-" + HexEncode(RandomBytes(ID_BYTES));
}

} // namespace

std::string KeptSetting(WriteSession &session, const std::string &name, const Make &make, const IsCurrent &isCurrent)
{
    if (std::optional<std::string> kept = FindKept(session.View(), name, isCurrent)) {
        return *kept;
    }
    std::string made = make();
    session.SetSetting(name, made);
    return made;
}

std::string KeptSetting(Store &store, const std::string &name, const Make &make, const IsCurrent &isCurrent)
{
    if (std::optional<std::string> kept = FindKept(*store.BeginRead(), name, isCurrent)) {
        return *kept;
    }
    std::unique_ptr<WriteSession> session = store.BeginWrite();
    // Another thread may have made it meanwhile.
    std::string kept = KeptSetting(*session, name, make, isCurrent);
    session->Commit();
    return kept;
}

std::string AccountId(Store &store)
{
    return KeptSetting(store, SETTING_ACCOUNT_ID, MakeAccountId);
}

std::string AccountId(WriteSession &session)
{
    return KeptSetting(session, SETTING_ACCOUNT_ID, MakeAccountId);
}

} // namespace DriveService
