// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <array>

#include <sys/socket.h>
#include <unistd.h>

#include "fuzz_target.h"
#include "ipc_object_stub.h"
#include "message_parcel.h"
#include "wire_acceptor.h"

namespace {
using Host::Ipc::UniqueFd;
using Host::Ipc::WireAcceptor;

// Reads all that is in a request and sends it back.
class EchoAbility : public OHOS::IPCObjectStub {
public:
    int OnRemoteRequest(uint32_t, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &) override
    {
        reply.WriteString16(data.ReadInterfaceToken());
        reply.WriteRemoteObject(data.ReadRemoteObject());
        const UniqueFd descriptor(data.ReadFileDescriptor());
        const int32_t size = data.ReadInt32();
        const void *bytes = size > 0 ? data.ReadRawData(static_cast<size_t>(size)) : nullptr;
        if (bytes != nullptr) {
            reply.WriteRawData(bytes, static_cast<size_t>(size));
        }
        return 0;
    }
};

WireAcceptor &Acceptor()
{
    static const auto *ability = new OHOS::sptr<OHOS::IRemoteObject>(new EchoAbility);
    static const auto *acceptor = new std::shared_ptr<WireAcceptor>(
        std::make_shared<WireAcceptor>([](const std::string &, const std::string &, int32_t) { return *ability; },
            [] {}, static_cast<int>(geteuid())));
    return **acceptor;
}

void ReadToTheEnd(int socket)
{
    std::array<char, 4096> buffer = {};
    while (read(socket, buffer.data(), buffer.size()) > 0) {
    }
}
} // namespace

// What another process of the user sends over a connection. However that ends, the service closes its end.
void Fuzz::TestOne(const std::string &input)
{
    std::array<int, 2> ends = {};
    FUZZ_CHECK(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0);
    const UniqueFd far(ends[0]);
    Acceptor().Accept(UniqueFd(ends[1]));
    if (write(far.Get(), input.data(), input.size()) >= 0) {
        shutdown(far.Get(), SHUT_WR);
    }
    ReadToTheEnd(far.Get());
}
