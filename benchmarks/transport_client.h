// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BENCH_TRANSPORT_CLIENT_H
#define NUBIS_BENCH_TRANSPORT_CLIENT_H

#include <cstdint>
#include <memory>
#include <string>

#include "iremote_object.h"
#include "refbase.h"

namespace NubisBench {
// The way to a drive service with nothing but the host's transport: what the library is held against. Uses the session
// that the library has, if it has one. Any thread; whatever fails throws.
class TransportClient {
public:
    // Starts the service when it does not run.
    explicit TransportClient(int32_t userId);
    ~TransportClient();
    TransportClient(const TransportClient &) = delete;
    TransportClient &operator=(const TransportClient &) = delete;

    // One synchronous request as the library sends it. Saves carry an object to call back on.
    std::string Exchange(const std::string &request, bool withObject) const;
    // One asynchronous request, whose reply comes in a call of the service's. One at a time.
    std::string ExchangeAsync(const std::string &request) const;

    // Orders for the service of the benchmarks.
    void SetReply(const std::string &function, const std::string &reply, int delayMs = 0) const;
    void Capture(const std::string &function) const;
    std::string Captured() const;
    void HoldSaves(bool isOn) const;
    int CountHeld() const;

private:
    class Connection;
    class Receiver;

    OHOS::sptr<Connection> connection_;
    OHOS::sptr<OHOS::IRemoteObject> service_;
    OHOS::sptr<Receiver> receiver_;
};
} // namespace NubisBench

#endif // NUBIS_BENCH_TRANSPORT_CLIENT_H
