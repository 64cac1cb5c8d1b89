// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BENCH_CANNED_PROTOCOL_H
#define NUBIS_BENCH_CANNED_PROTOCOL_H

#include <cstdint>

// What the service of the benchmarks understands: the requests of the library, and orders what to do with them.
namespace NubisBench {
constexpr const char *SERVICE_BUNDLE = "com.orvane.tyra.aerostash";
constexpr const char *SERVICE_ABILITY = "DriveServiceAbility";
constexpr const char16_t *SERVICE_TOKEN = u"OHOS.Aerostash.DriveServiceAbility";
constexpr const char16_t *CALLBACK_TOKEN = u"OHOS.Drive.DriveCallbackAbility";

enum TransactionCode : uint32_t {
    SYNC_REQUEST = 3,
    ASYNC_REQUEST = 4,
    // Text of a function, int32 milliseconds, text of its reply: what it is answered with from now on, and after how long.
    SET_REPLY = 100,
    // Text of a function. The reply is the text of its next request, once that has come.
    CAPTURE = 101,
    CAPTURED = 102,
    // Int32: while it is 1, saves are not answered.
    HOLD_SAVES = 103,
    // The reply is the int32 number of saves that wait.
    COUNT_HELD = 104,
};
} // namespace NubisBench

#endif // NUBIS_BENCH_CANNED_PROTOCOL_H
