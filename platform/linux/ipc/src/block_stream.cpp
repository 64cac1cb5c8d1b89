// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "block_stream.h"

#include <utility>

namespace Host::Ipc {

BlockStream::BlockStream(kj::AsyncCapabilityStream &stream, std::function<bool()> mayRead)
    : stream_(stream), mayRead_(std::move(mayRead))
{}

void BlockStream::Keep(const void *data, std::shared_ptr<const void> owner)
{
    kept_.emplace(data, std::move(owner));
}

// A block is a segment of its own.
void BlockStream::Take(kj::ArrayPtr<const kj::ArrayPtr<const capnp::word>> segments, Owners &owners)
{
    for (const auto &segment : segments) {
        auto found = kept_.find(segment.begin());
        if (found != kept_.end()) {
            owners.add(std::move(found->second));
            kept_.erase(found);
        }
    }
}

kj::Promise<void> BlockStream::writeMessage(
    kj::ArrayPtr<const int> fds, kj::ArrayPtr<const kj::ArrayPtr<const capnp::word>> segments)
{
    Owners owners;
    Take(segments, owners);
    return stream_.writeMessage(fds, segments).attach(kj::mv(owners));
}

kj::Promise<void> BlockStream::writeMessages(kj::ArrayPtr<kj::ArrayPtr<const kj::ArrayPtr<const capnp::word>>> messages)
{
    Owners owners;
    for (const auto &segments : messages) {
        Take(segments, owners);
    }
    return stream_.writeMessages(messages).attach(kj::mv(owners));
}

kj::Promise<kj::Maybe<capnp::MessageReaderAndFds>> BlockStream::tryReadMessage(
    kj::ArrayPtr<kj::AutoCloseFd> fdSpace, capnp::ReaderOptions options, kj::ArrayPtr<capnp::word> scratchSpace)
{
    if (!mayRead_()) {
        return kj::Maybe<capnp::MessageReaderAndFds>(nullptr);
    }
    return stream_.tryReadMessage(fdSpace, options, scratchSpace);
}

kj::Maybe<int> BlockStream::getSendBufferSize()
{
    return stream_.getSendBufferSize();
}

kj::Promise<void> BlockStream::end()
{
    return stream_.end();
}

} // namespace Host::Ipc
