// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "host/paths.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace Host {

namespace {

constexpr mode_t PRIVATE_MODE = 0700;

std::string Variable(const char *name)
{
    const char *value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string ParentOf(const std::string &path)
{
    size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string NameOf(const std::string &path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string HomeDir()
{
    std::string home = Variable("HOME");
    if (!home.empty()) {
        return home;
    }
    passwd entry = {};
    passwd *found = nullptr;
    char buffer[4096];
    if (getpwuid_r(geteuid(), &entry, buffer, sizeof(buffer), &found) == 0 && found != nullptr) {
        return found->pw_dir;
    }
    return "/tmp/nubis-home-" + std::to_string(geteuid());
}

std::string ManifestDirBeside(const std::string &file)
{
    char resolved[PATH_MAX];
    if (file.empty() || realpath(file.c_str(), resolved) == nullptr) {
        return std::string();
    }
    const std::string folder = ParentOf(resolved);
    std::string prefix = ParentOf(folder);
    // Distributions have a folder for each architecture below lib.
    if (NameOf(prefix) == "lib" && NameOf(folder) != "lib" && NameOf(folder) != "bin") {
        prefix = ParentOf(prefix);
    }
    return prefix + "/share/nubis/manifests";
}

} // namespace

std::string RuntimeDir()
{
    std::string dir = Variable("NUBIS_RUNTIME_DIR");
    if (!dir.empty()) {
        return dir;
    }
    dir = Variable("XDG_RUNTIME_DIR");
    return dir.empty() ? "/tmp/nubis-" + std::to_string(geteuid()) : dir + "/nubis";
}

std::string StateDir()
{
    std::string dir = Variable("NUBIS_STATE_DIR");
    if (!dir.empty()) {
        return dir;
    }
    dir = Variable("XDG_STATE_HOME");
    return dir.empty() ? HomeDir() + "/.local/state/nubis" : dir + "/nubis";
}

std::vector<std::string> ManifestDirs()
{
    std::vector<std::string> dirs;
    std::string list = Variable("NUBIS_MANIFEST_PATH");
    for (size_t start = 0; start < list.size();) {
        size_t end = list.find(':', start);
        end = end == std::string::npos ? list.size() : end;
        if (end > start) {
            dirs.push_back(list.substr(start, end - start));
        }
        start = end + 1;
    }
    if (!list.empty()) {
        return dirs;
    }
    Dl_info library = {};
    if (dladdr(reinterpret_cast<const void *>(&RuntimeDir), &library) != 0 && library.dli_fname != nullptr) {
        dirs.push_back(ManifestDirBeside(library.dli_fname));
    }
    std::string beside = ManifestDirBeside("/proc/self/exe");
    if (!beside.empty() && (dirs.empty() || dirs.front() != beside)) {
        dirs.push_back(beside);
    }
    return dirs;
}

std::string DeviceName()
{
    std::string name = Variable("NUBIS_DEVICE_NAME");
    if (!name.empty()) {
        return name;
    }
    char host[HOST_NAME_MAX + 1] = {};
    return gethostname(host, sizeof(host) - 1) == 0 ? std::string(host) : std::string("localhost");
}

std::string AbilitySocketPath(const std::string &bundleName, const std::string &abilityName, int32_t userId)
{
    return RuntimeDir() + "/" + std::to_string(userId) + "/" + bundleName + "." + abilityName + ".sock";
}

bool MakeDirs(const std::string &path, std::string &error)
{
    int refusal = ENOTDIR;
    for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        std::string part = path.substr(0, slash);
        if (mkdir(part.c_str(), PRIVATE_MODE) != 0 && errno != EEXIST) {
            refusal = errno;
            // A folder above may be there and closed to us.
            if (refusal != EROFS && refusal != EACCES) {
                error = "cannot create the folder " + part + ": " + std::strerror(refusal);
                return false;
            }
        }
        if (slash == std::string::npos) {
            break;
        }
    }
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        error = "cannot create the folder " + path + ": " + std::strerror(refusal);
        return false;
    }
    return true;
}

std::string PrivateFolderProblem(const std::string &path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) {
        return "cannot look at the folder " + path + ": " + std::strerror(errno);
    }
    if (!S_ISDIR(status.st_mode)) {
        return path + " is not a folder";
    }
    if (status.st_uid != geteuid()) {
        return "the folder " + path + " belongs to user " + std::to_string(status.st_uid) + ", not to user " +
               std::to_string(geteuid());
    }
    if ((status.st_mode & 07777) != PRIVATE_MODE) {
        char mode[16];
        snprintf(mode, sizeof(mode), "%04o", static_cast<unsigned>(status.st_mode & 07777));
        return "the folder " + path + " has mode " + mode + ", it must be 0700";
    }
    return std::string();
}

bool PrepareRuntimeDir(int32_t userId, std::string &error)
{
    std::string runtime = RuntimeDir();
    std::string user = runtime + "/" + std::to_string(userId);
    if (!MakeDirs(runtime, error)) {
        return false;
    }
    // The outer one first: only in a folder of our own can nobody prepare the inner one for us.
    error = PrivateFolderProblem(runtime);
    if (!error.empty() || !MakeDirs(user, error)) {
        return false;
    }
    error = PrivateFolderProblem(user);
    return error.empty();
}

} // namespace Host
