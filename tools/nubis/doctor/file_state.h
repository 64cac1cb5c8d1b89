// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_FILE_STATE_H
#define NUBIS_TOOL_FILE_STATE_H

#include <string>
#include <sys/types.h>

namespace NubisTool {

// What is at a path, links not followed.
struct FileState {
    explicit FileState(const std::string &path);

    bool exists = false;
    mode_t type = 0; // S_IFDIR and so on
    mode_t mode = 0; // the permission bits
    uid_t owner = 0;
    std::string error; // why it cannot be looked at; empty when it can, or when nothing is there

    bool IsMine() const;
    // "0700"
    std::string ModeText() const;
    // What is said of it when it should have been a folder.
    std::string NoFolderText() const;
};

// Why its owner cannot read and change it, a folder or a file; empty when that is possible, or nothing is there.
std::string AccessProblem(const std::string &path);

// The text in single quotes where a shell would take it for anything else than one word.
std::string ShellWord(const std::string &text);

} // namespace NubisTool

#endif
