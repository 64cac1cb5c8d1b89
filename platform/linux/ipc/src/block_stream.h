// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_BLOCK_STREAM_H
#define HOST_IPC_BLOCK_STREAM_H

#include <functional>
#include <memory>
#include <unordered_map>

#include <capnp/serialize-async.h>
#include <kj/async-io.h>

// The library's stream interface has no virtual destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace Host::Ipc {

// The messages of a lane. A large block is not copied into its message, which only refers to it; this stream keeps the
// block until the message is written. When that is, only this end knows: it must not be left to what the far end says.
// Lives on the lane's thread.
class BlockStream final : public capnp::MessageStream {
public:
    // `mayRead` is asked before each message is read; where it says no, the stream ends.
    BlockStream(kj::AsyncCapabilityStream &stream, std::function<bool()> mayRead);

    // Keeps the bytes that begin at `data` until a message with them, sent from now on, is written.
    void Keep(const void *data, std::shared_ptr<const void> owner);

    kj::Promise<kj::Maybe<capnp::MessageReaderAndFds>> tryReadMessage(kj::ArrayPtr<kj::AutoCloseFd> fdSpace,
        capnp::ReaderOptions options, kj::ArrayPtr<capnp::word> scratchSpace) override;
    kj::Promise<void> writeMessage(
        kj::ArrayPtr<const int> fds, kj::ArrayPtr<const kj::ArrayPtr<const capnp::word>> segments) override;
    kj::Promise<void> writeMessages(
        kj::ArrayPtr<kj::ArrayPtr<const kj::ArrayPtr<const capnp::word>>> messages) override;
    kj::Maybe<int> getSendBufferSize() override;
    kj::Promise<void> end() override;

private:
    using Owners = kj::Vector<std::shared_ptr<const void>>;

    void Take(kj::ArrayPtr<const kj::ArrayPtr<const capnp::word>> segments, Owners &owners);

    capnp::AsyncCapabilityMessageStream stream_;
    const std::function<bool()> mayRead_;
    // By their first byte; the same block may be on its way several times.
    std::unordered_multimap<const void *, std::shared_ptr<const void>> kept_;
};

} // namespace Host::Ipc

#pragma GCC diagnostic pop

#endif // HOST_IPC_BLOCK_STREAM_H
