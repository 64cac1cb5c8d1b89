// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_FUZZ_TARGET_H
#define NUBIS_FUZZ_TARGET_H

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Fuzz {
// Each fuzzer defines this one. It is called for one input after the other in one process, so that what an input leaves
// behind must not change what the next one does. Whatever it does not catch is a fault.
void TestOne(const std::string &input);

// A folder of this process that is gone when it ends. Made at the first call; services, sockets and events of the
// process are in it too.
const std::string &Folder();

// The first byte, which many fuzzers take for what to do with the rest; 0 when there is none.
inline char Selector(const std::string &input)
{
    return input.empty() ? '\0' : input[0];
}

inline std::string Body(const std::string &input)
{
    return input.empty() ? "" : input.substr(1);
}

[[noreturn]] inline void Fail(const char *condition, const char *file, int line)
{
    std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
    std::abort();
}
} // namespace Fuzz

// In every kind of build, unlike assert.
#define FUZZ_CHECK(condition) ((condition) ? static_cast<void>(0) : Fuzz::Fail(#condition, __FILE__, __LINE__))

#endif // NUBIS_FUZZ_TARGET_H
