// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/file_util.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "util/file_handle.h"

namespace DriveService {

namespace {

constexpr mode_t PRIVATE_FOLDER = S_IRWXU;
constexpr int64_t NS_PER_SECOND = 1000000000;

[[noreturn]] void Fail(const std::string &action, const std::string &path)
{
    throw std::runtime_error("cannot " + action + " " + path + ": " + std::strerror(errno));
}

} // namespace

void MakePrivateFolder(const std::string &path)
{
    std::filesystem::path folder;
    for (const std::filesystem::path &part : std::filesystem::path(path)) {
        folder /= part;
        if (mkdir(folder.c_str(), PRIVATE_FOLDER) != 0 && errno != EEXIST) {
            Fail("make the folder", folder.string());
        }
    }
    struct stat info {};
    if (stat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        throw std::runtime_error(path + " is not a folder");
    }
    if (access(path.c_str(), R_OK | W_OK | X_OK) != 0) {
        Fail("use the folder", path);
    }
}

std::optional<std::string> ReadFile(const std::string &path, size_t limit, std::string &error)
{
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        error = std::strerror(errno);
        return std::nullopt;
    }
    if (!S_ISREG(info.st_mode)) {
        error = "it is not a regular file";
        return std::nullopt;
    }
    if (static_cast<size_t>(info.st_size) > limit) {
        error = "it has " + std::to_string(info.st_size) + " bytes, at most " + std::to_string(limit) + " are allowed";
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    if (info.st_size > 0) {
        content << file.rdbuf();
    }
    if (!file || !content) {
        error = std::strerror(errno);
        return std::nullopt;
    }
    return content.str();
}

void ReplaceFile(const std::string &path, const std::string &content)
{
    std::filesystem::path target(path);
    std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
    // A leading '.' and another ending keep readers of the folder from taking it for a finished file.
    std::string beside =
        (folder / ("." + target.filename().string() + "." + std::to_string(getpid()) + ".new")).string();
    try {
        FileHandle file(beside, O_WRONLY | O_CREAT | O_TRUNC);
        file.Write(content);
        file.Flush();
        if (rename(beside.c_str(), path.c_str()) != 0) {
            Fail("replace", path);
        }
    } catch (const std::exception &) {
        unlink(beside.c_str());
        throw;
    }
    FileHandle(folder.string(), O_RDONLY | O_DIRECTORY).Flush();
}

std::optional<FileSignature> SignatureOf(const std::string &path)
{
    struct stat info {};
    if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    FileSignature signature;
    signature.modifiedNs = info.st_mtim.tv_sec * NS_PER_SECOND + info.st_mtim.tv_nsec;
    signature.changedNs = info.st_ctim.tv_sec * NS_PER_SECOND + info.st_ctim.tv_nsec;
    signature.size = info.st_size;
    signature.inode = info.st_ino;
    return signature;
}

} // namespace DriveService
