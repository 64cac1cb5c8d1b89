// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_UUID_HELPER_H
#define NUBIS_UUID_HELPER_H

#include <array>
#include <cstdint>
#include <string>

#include "nb_types.h"

namespace Nubis {
// Fresh identifiers. Any thread may call.
class UuidHelper {
public:
    // A random UUID in its usual form of 36 characters.
    static std::string GenerateUuid();
    // The same as 32 characters, without hyphens.
    static std::string GenerateUuidWithoutDelim();
    // <prefix of the demon>_01_<seconds since the epoch>_<eight random digits>
    static std::string GenerateTraceId(NBCloudSyncDemon syncDemon);

    // The digits that end a trace id: each byte modulo 100, as two digits.
    static std::string TraceDigits(const std::array<uint8_t, 4> &bytes);
};
} // namespace Nubis

#endif // NUBIS_UUID_HELPER_H
