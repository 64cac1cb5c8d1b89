// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "file_state.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace NubisTool {

FileState::FileState(const std::string &path)
{
    constexpr mode_t permissions = 07777;
    struct stat info {};
    if (lstat(path.c_str(), &info) == 0) {
        exists = true;
        type = info.st_mode & static_cast<mode_t>(S_IFMT);
        mode = info.st_mode & permissions;
        owner = info.st_uid;
    } else if (errno != ENOENT) {
        error = std::strerror(errno);
    }
}

bool FileState::IsMine() const
{
    return owner == geteuid();
}

std::string FileState::ModeText() const
{
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "%04o", static_cast<unsigned>(mode));
    return text.data();
}

std::string FileState::NoFolderText() const
{
    return error.empty() ? " is no folder" : " cannot be looked at: " + error;
}

std::string AccessProblem(const std::string &path)
{
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        return errno == ENOENT ? "" : std::strerror(errno);
    }
    const int wanted = R_OK | W_OK | (S_ISDIR(info.st_mode) ? X_OK : 0);
    return access(path.c_str(), wanted) == 0 ? "" : std::strerror(errno);
}

std::string ShellWord(const std::string &text)
{
    constexpr const char *harmless = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+./:@%,=";
    if (!text.empty() && text.find_first_not_of(harmless) == std::string::npos) {
        return text;
    }
    std::string word = "'";
    for (char character : text) {
        word += character == '\'' ? "'\\''" : std::string(1, character);
    }
    return word + "'";
}

} // namespace NubisTool
