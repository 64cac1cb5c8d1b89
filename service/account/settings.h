// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_ACCOUNT_SETTINGS_H
#define NUBIS_SERVICE_ACCOUNT_SETTINGS_H

#include <functional>
#include <string>

#include "store/store.h"

namespace DriveService {

// Names of the store's settings that more than one place uses. Those that are made for a container end in
// "/BUNDLE/CONTAINER".
constexpr const char *SETTING_ACCOUNT_ID = "account/userId";
constexpr const char *SETTING_CLOUD_STATUS = "account/cloudStatus";

// How the names of families of settings begin.
constexpr const char *SETTINGS_ACCESS_TOKEN = "accessToken/";
constexpr const char *SETTINGS_LOCK = "lock/";
constexpr const char *SETTINGS_RESTORE = "restore/";
constexpr const char *SETTINGS_SERVED_VERSIONS = "catalogue/";

// The setting's value; one that is not there yet is made and kept, so that everyone gets the same for ever.
// `make` runs within a write session and must not begin another. One that `isCurrent` turns down, when it is given, is
// made anew.
std::string KeptSetting(Store &store, const std::string &name, const std::function<std::string()> &make,
    const std::function<bool(const std::string &)> &isCurrent = nullptr);

// The same within a session: what was made is kept when that is committed.
std::string KeptSetting(WriteSession &session, const std::string &name, const std::function<std::string()> &make,
    const std::function<bool(const std::string &)> &isCurrent = nullptr);

// The cloud account's id of the store's user.
std::string AccountId(Store &store);
std::string AccountId(WriteSession &session);

} // namespace DriveService

#endif // NUBIS_SERVICE_ACCOUNT_SETTINGS_H
