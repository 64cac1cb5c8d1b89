// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "fuzz_target.h"

#include <cstddef>
#include <cstdint>

#include "host_folders.h"

// The functions that libFuzzer, or standalone_main.cpp, calls.
extern "C" int LLVMFuzzerInitialize(int *, char ***);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

const std::string &Fuzz::Folder()
{
    static const NubisTest::HostFolders folders;
    static const std::string path = folders.Root();
    return path;
}

int LLVMFuzzerInitialize(int *, char ***)
{
    // Messages are formatted, because they carry what came from outside, but nobody reads them.
    setenv("NUBIS_LOG_LEVEL", "debug", 1);
    setenv("NUBIS_LOG_FILE", "/dev/null", 1);
    Fuzz::Folder();
    return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Fuzz::TestOne(std::string(reinterpret_cast<const char *>(data), size));
    return 0;
}
