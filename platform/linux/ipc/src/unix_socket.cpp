// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "unix_socket.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>

namespace Host::Ipc {

namespace {

constexpr int BACKLOG = 128;
constexpr timeval QUEUE_TIME = {3, 0};

bool FillAddress(const std::string &path, sockaddr_un &address, std::string &error)
{
    address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        error = "the socket path " + path + " has " + std::to_string(path.size()) + " characters, at most " +
                std::to_string(sizeof(address.sun_path) - 1) + " are possible: choose a shorter NUBIS_RUNTIME_DIR";
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

std::string SystemError(const std::string &what, const std::string &path)
{
    return what + " " + path + ": " + std::strerror(errno);
}

bool Connect(int socket, const sockaddr_un &address, bool &nobody)
{
    int result = -1;
    do {
        result = connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address));
    } while (result != 0 && errno == EINTR);
    nobody = result != 0 && (errno == ENOENT || errno == ECONNREFUSED);
    return result == 0;
}

} // namespace

UniqueFd ConnectSocket(const std::string &path, std::string &error, bool &nobody)
{
    sockaddr_un address;
    nobody = false;
    if (!FillAddress(path, address, error)) {
        return UniqueFd();
    }
    UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    // While the queue of the listening process is full, connecting waits for it; but not for ever.
    if (fd && setsockopt(fd.Get(), SOL_SOCKET, SO_SNDTIMEO, &QUEUE_TIME, sizeof(QUEUE_TIME)) != 0) {
        fd.Reset();
    }
    if (!fd || !Connect(fd.Get(), address, nobody)) {
        error = SystemError("cannot connect to", path);
        return UniqueFd();
    }
    return fd;
}

UniqueFd ConnectSocketAtOnce(const std::string &path, bool &nobody)
{
    sockaddr_un address;
    std::string ignored;
    nobody = false;
    if (!FillAddress(path, address, ignored)) {
        return UniqueFd();
    }
    UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (fd && !Connect(fd.Get(), address, nobody)) {
        fd.Reset();
    }
    return fd;
}

UniqueFd ListenSocket(const std::string &path, std::string &error)
{
    sockaddr_un address;
    if (!FillAddress(path, address, error)) {
        return UniqueFd();
    }
    UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!fd || bind(fd.Get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0 ||
        chmod(path.c_str(), S_IRUSR | S_IWUSR) != 0 || listen(fd.Get(), BACKLOG) != 0) {
        error = SystemError("cannot listen at", path);
        return UniqueFd();
    }
    return fd;
}

bool GetPeer(int socket, int &pid, int &uid)
{
    ucred credentials = {};
    socklen_t size = sizeof(credentials);
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
        return false;
    }
    pid = credentials.pid;
    uid = static_cast<int>(credentials.uid);
    return true;
}

} // namespace Host::Ipc
