// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "uuid_helper.h"

#include <algorithm>

#include <uuid/uuid.h>

#include "wall_clock.h"

namespace Nubis {
namespace {
// The canonical text and its terminator.
constexpr size_t UUID_TEXT_SIZE = 37;

const char *TracePrefix(NBCloudSyncDemon syncDemon)
{
    switch (syncDemon) {
        case NB_SYNC_DEMON_DATA:
            return "20000";
        case NB_SYNC_DEMON_FILE:
            return "30000";
        case NB_SYNC_DEMON_ASSET:
            return "40000";
        default:
            return "09000";
    }
}
} // namespace

std::string UuidHelper::GenerateUuid()
{
    uuid_t uuid;
    uuid_generate(uuid);
    char text[UUID_TEXT_SIZE] = {0};
    uuid_unparse(uuid, text);
    return text;
}

std::string UuidHelper::GenerateUuidWithoutDelim()
{
    std::string text = GenerateUuid();
    text.erase(std::remove(text.begin(), text.end(), '-'), text.end());
    return text;
}

std::string UuidHelper::GenerateTraceId(NBCloudSyncDemon syncDemon)
{
    uuid_t uuid;
    uuid_generate(uuid);
    std::string traceId = TracePrefix(syncDemon);
    traceId += "_01_";
    traceId += std::to_string(WallClock::NowSeconds());
    traceId += '_';
    traceId += TraceDigits({uuid[0], uuid[1], uuid[2], uuid[3]});
    return traceId;
}

std::string UuidHelper::TraceDigits(const std::array<uint8_t, 4> &bytes)
{
    constexpr unsigned int base = 10;
    std::string digits;
    for (uint8_t byte : bytes) {
        unsigned int twoDigits = byte % (base * base);
        digits += static_cast<char>('0' + twoDigits / base);
        digits += static_cast<char>('0' + twoDigits % base);
    }
    return digits;
}
} // namespace Nubis
