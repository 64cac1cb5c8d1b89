// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_TEMP_DIR_H
#define NUBIS_TOOL_TEMP_DIR_H

#include <string>

namespace NubisTool {

// A fresh folder that only this user may enter, removed with everything in it when the object goes. Throws CommandError
// when none can be made.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    const std::string &Path() const
    {
        return path_;
    }

    // Makes a folder inside it and returns its path.
    std::string Make(const std::string &name) const;

private:
    std::string path_;
};

} // namespace NubisTool

#endif
