// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "host/ability_control.h"

#include <mutex>

#include "connect_error.h"
#include "host/paths.h"
#include "unix_socket.h"

namespace Host {

namespace {

struct ErrorText {
    std::mutex mutex;
    std::string text;
};

ErrorText &TheErrorText()
{
    static auto *error = new ErrorText();
    return *error;
}

} // namespace

AbilityStatus FindAbility(const std::string &bundleName, const std::string &abilityName, int32_t userId)
{
    AbilityStatus status;
    status.socketPath = AbilitySocketPath(bundleName, abilityName, userId);
    std::string error;
    bool nobody = false;
    Ipc::UniqueFd socket = Ipc::ConnectSocket(status.socketPath, error, nobody);
    int uid = -1;
    status.running = socket && Ipc::GetPeer(socket.Get(), status.pid, uid);
    return status;
}

std::string LastConnectError()
{
    ErrorText &error = TheErrorText();
    std::lock_guard<std::mutex> lock(error.mutex);
    return error.text;
}

void SetLastConnectError(const std::string &text)
{
    ErrorText &error = TheErrorText();
    std::lock_guard<std::mutex> lock(error.mutex);
    error.text = text;
}

} // namespace Host
