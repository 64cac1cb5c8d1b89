// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "service_instance.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "backup/backup_import.h"
#include "host/event_channel.h"
#include "util/file_util.h"

namespace DriveService {

namespace {

std::string ReadHolder(int fd)
{
    char holder[32] = {};
    return read(fd, holder, sizeof(holder) - 1) > 0 ? holder : "unknown";
}

// Waits a little: for a service that has stopped serving and is about to end, and for who only looks at the lock.
bool AwaitLock(int fd)
{
    constexpr int tries = 100;
    constexpr std::chrono::milliseconds pause(5);
    for (int i = 0; i < tries; ++i) {
        if (flock(fd, LOCK_EX | LOCK_NB) == 0) {
            return true;
        }
        std::this_thread::sleep_for(pause);
    }
    return false;
}

// The lock is the process's: it ends with it, however it ends. The number inside is for people.
int TakeLock(const std::string &path)
{
    int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (fd < 0) {
        throw std::runtime_error("cannot open " + path + ": " + std::strerror(errno));
    }
    if (!AwaitLock(fd)) {
        std::string holder = ReadHolder(fd);
        close(fd);
        throw std::runtime_error(
            "a drive service is already running on this data (process " + holder + " holds " + path + ")");
    }
    std::string pid = std::to_string(getpid());
    if (ftruncate(fd, 0) != 0 || write(fd, pid.data(), pid.size()) != static_cast<ssize_t>(pid.size())) {
        int cause = errno;
        close(fd);
        throw std::runtime_error("cannot write " + path + ": " + std::strerror(cause));
    }
    return fd;
}

// Whoever can write to the folder can put other data, and another catalogue, in the place of the user's.
void RefuseFolderOpenToOthers(const std::string &folder)
{
    struct stat info {};
    if (stat(folder.c_str(), &info) != 0) {
        throw std::runtime_error("cannot look at " + folder + ": " + std::strerror(errno));
    }
    if (info.st_uid != geteuid()) {
        throw std::runtime_error("the folder " + folder + " belongs to user " + std::to_string(info.st_uid) +
                                 ", not to user " + std::to_string(geteuid()) +
                                 "; run the service as its owner, or name another data folder");
    }
    if ((info.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw std::runtime_error(
            "others can write to the data folder " + folder + "; run chmod go-w on it, or name another one");
    }
}

void Tighten(const std::string &folder)
{
    if (chmod(folder.c_str(), S_IRWXU) != 0) {
        throw std::runtime_error("cannot make " + folder + " private: " + std::strerror(errno));
    }
}

} // namespace

DataPaths::DataPaths(const std::string &dataFolder, int userId)
    : catalogue(CatalogueOf(dataFolder)), userFolder(dataFolder + "/user-" + std::to_string(userId)),
      database(userFolder + "/drive.db"), pushKey(userFolder + "/push_key.pem"), lock(userFolder + "/lock")
{}

std::string DataPaths::CatalogueOf(const std::string &dataFolder)
{
    return dataFolder + "/catalogue";
}

std::string HolderOf(const std::string &lockPath)
{
    int fd = open(lockPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return "";
    }
    // Given back at once, because a service that starts does not wait for long.
    std::string holder = flock(fd, LOCK_SH | LOCK_NB) == 0 ? "" : ReadHolder(fd);
    close(fd);
    return holder;
}

ServiceInstance::ServiceInstance(const std::string &dataFolder, int userId, std::function<int64_t()> nowMs)
    : paths_(dataFolder, userId)
{
    MakePrivateFolder(dataFolder);
    // The data folder itself may be any folder of the user's; what is inside it is the service's.
    RefuseFolderOpenToOthers(dataFolder);
    MakePrivateFolder(paths_.userFolder);
    Tighten(paths_.userFolder);
    RefuseFolderOpenToOthers(paths_.userFolder);
    lockFd_ = TakeLock(paths_.lock);
    try {
        store_ = std::make_unique<SqliteStore>(paths_.database);
        catalogue_ = std::make_unique<Catalogue>(paths_.catalogue, *store_);
        FinishImport(*store_, *catalogue_);
    } catch (const std::exception &) {
        close(lockFd_);
        throw;
    }
    pushKey_ = std::make_unique<PushKey>(paths_.pushKey);
    auto publish = [userId](const std::string &eventName, const std::string &text, std::string &error) {
        return Host::PublishEvent(userId, eventName, text, error);
    };
    notifier_ = std::make_unique<Notifier>(*store_, *pushKey_, nowMs, publish);
    router_ = std::make_unique<RequestRouter>(
        ServiceContext{*store_, *catalogue_, *pushKey_, *notifier_, paths_.userFolder, std::move(nowMs)});
}

ServiceInstance::~ServiceInstance()
{
    router_.reset();
    notifier_.reset();
    catalogue_.reset();
    store_.reset();
    close(lockFd_);
}

int64_t SystemNowMs()
{
    auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

} // namespace DriveService
