// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "event_spool.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "host/event_channel.h"
#include "host/paths.h"
#include "ipc_log.h"
#include "manifest.h"
#include "unix_socket.h"

namespace Host {

namespace {

constexpr const char *WAKE = "/wake";
constexpr const char *UNFINISHED_WAKE = "/.wake";
constexpr const char *TEXT_END = ".event";
constexpr const char *GAP_END = ".gap";
constexpr mode_t FOLDER_MODE = 0700;
constexpr mode_t FILE_MODE = 0600;

bool EndsWith(std::string_view name, std::string_view end)
{
    return name.size() > end.size() && name.substr(name.size() - end.size()) == end;
}

// What the folder holds besides what is not finished yet; nothing when it cannot be read.
template <typename Visit>
void ForEachName(const std::string &folder, Visit &&visit)
{
    std::unique_ptr<DIR, int (*)(DIR *)> entries(opendir(folder.c_str()), &closedir);
    while (const dirent *entry = entries ? readdir(entries.get()) : nullptr) {
        if (entry->d_name[0] != '.') {
            visit(std::string_view(entry->d_name));
        }
    }
}

std::string SystemError(const std::string &what, const std::string &path)
{
    return what + " " + path + ": " + std::strerror(errno);
}

bool WriteFile(const std::string &path, const std::string &content)
{
    Ipc::UniqueFd fd(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, FILE_MODE));
    for (size_t done = 0; fd && done < content.size();) {
        ssize_t count = write(fd.Get(), content.data() + done, content.size() - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        done += static_cast<size_t>(count);
    }
    return static_cast<bool>(fd);
}

// Under a name that the reader does not see, then under its own.
bool LeaveFile(const std::string &spool, const std::string &name, const std::string &content, std::string &error)
{
    std::string unfinished = spool + "/." + name;
    if (WriteFile(unfinished, content) && rename(unfinished.c_str(), (spool + "/" + name).c_str()) == 0) {
        return true;
    }
    error = SystemError("cannot leave an event in", spool);
    unlink(unfinished.c_str());
    return false;
}

// False when the listener is dead. One whose queue is full has not looked yet and needs no waking.
bool Wake(const std::string &spool)
{
    bool nobody = false;
    return static_cast<bool>(Ipc::ConnectSocketAtOnce(spool + WAKE, nobody)) || !nobody;
}

struct Unread {
    size_t texts = 0;
    std::string newest;
};

Unread CountUnread(const std::string &spool)
{
    Unread unread;
    ForEachName(spool, [&](std::string_view name) {
        bool isText = EndsWith(name, TEXT_END);
        unread.texts += isText ? 1 : 0;
        if ((isText || EndsWith(name, GAP_END)) && name > unread.newest) {
            unread.newest = name;
        }
    });
    return unread;
}

} // namespace

std::string PrepareEventFolder(int32_t userId, const std::string &eventName, std::string &error)
{
    if (!IsSafeName(eventName)) {
        error = "\"" + eventName + "\" is not the name of an event: expected letters, digits, '.', '_' and '-'";
        return "";
    }
    if (!PrepareRuntimeDir(userId, error)) {
        return "";
    }
    std::string folder = RuntimeDir() + "/" + std::to_string(userId) + "/events/" + eventName;
    return MakeDirs(folder, error) ? folder : "";
}

Ipc::UniqueFd OpenSpool(const std::string &eventFolder, std::string &spool, std::string &error)
{
    static std::atomic<unsigned> counter{0};
    do {
        spool = eventFolder + "/" + std::to_string(getpid()) + "." + std::to_string(++counter);
        // A dead process may have had the same number.
    } while (mkdir(spool.c_str(), FOLDER_MODE) != 0 && errno == EEXIST);
    Ipc::UniqueFd socket = Ipc::ListenSocket(spool + UNFINISHED_WAKE, error);
    // Publishers take a socket where nobody listens for a dead listener's.
    if (socket && rename((spool + UNFINISHED_WAKE).c_str(), (spool + WAKE).c_str()) != 0) {
        error = SystemError("cannot listen in", spool);
        socket.Reset();
    }
    if (!socket) {
        RemoveSpool(spool);
    }
    return socket;
}

void RemoveSpool(const std::string &spool)
{
    // Without its socket the folder gets no more texts.
    unlink((spool + WAKE).c_str());
    std::error_code ignored;
    std::filesystem::remove_all(spool, ignored);
}

std::vector<std::string> FindSpools(const std::string &eventFolder)
{
    std::vector<std::string> spools;
    ForEachName(eventFolder, [&](std::string_view name) {
        std::string spool = eventFolder + "/" + std::string(name);
        // Without the socket it is not a listener's yet, or not any more.
        if (access((spool + WAKE).c_str(), F_OK) == 0) {
            spools.push_back(std::move(spool));
        }
    });
    return spools;
}

bool PutIntoSpool(const std::string &spool, const std::string &stamp, const std::string &text, std::string &error)
{
    Unread unread = CountUnread(spool);
    bool isTaken = unread.texts < MAX_UNREAD_EVENTS;
    if (isTaken) {
        isTaken = LeaveFile(spool, stamp + TEXT_END, text, error);
    } else {
        error = "the listener " + spool + " leaves " + std::to_string(unread.texts) + " events unread";
    }
    std::string ignored;
    if (!isTaken && !EndsWith(unread.newest, GAP_END)) {
        LeaveFile(spool, stamp + GAP_END, "", ignored);
    }
    if (!Wake(spool)) {
        RemoveSpool(spool);
        error.clear();
        return true;
    }
    return isTaken;
}

std::vector<std::string> ListSpool(const std::string &spool)
{
    std::vector<std::string> files;
    ForEachName(spool, [&](std::string_view name) {
        if (EndsWith(name, TEXT_END) || EndsWith(name, GAP_END)) {
            files.push_back(spool + "/" + std::string(name));
        }
    });
    std::sort(files.begin(), files.end());
    return files;
}

Taken TakeFromSpool(const std::string &file, std::string &text)
{
    text.clear();
    Ipc::UniqueFd fd(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!fd && (errno == EMFILE || errno == ENFILE || errno == ENOMEM)) {
        return Taken::LATER;
    }
    if (!fd && errno == ENOENT) {
        return Taken::NOTHING;
    }
    struct stat status = {};
    bool isGood = fd && fstat(fd.Get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
                  static_cast<size_t>(status.st_size) <= MAX_EVENT_SIZE && EndsWith(file, TEXT_END);
    text.resize(isGood ? static_cast<size_t>(status.st_size) : 0);
    for (size_t done = 0; isGood && done < text.size();) {
        ssize_t count = read(fd.Get(), text.data() + done, text.size() - done);
        if (count > 0) {
            done += static_cast<size_t>(count);
        } else {
            isGood = count < 0 && errno == EINTR;
        }
    }
    if (unlink(file.c_str()) != 0) {
        // Or it would be taken again and again.
        std::error_code ignored;
        std::filesystem::remove_all(file, ignored);
    }
    return isGood ? Taken::TEXT : Taken::GAP;
}

} // namespace Host
