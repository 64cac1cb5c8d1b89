// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <fcntl.h>
#include <utility>

#include "ipc_limits.h"
#include "lane_loop.h"
#include "lane_servers.h"
#include "string_ex.h"

// How parcels lie in messages; the rest of LaneLoop is in lane_loop.cpp.
namespace Host::Ipc {

void LaneLoop::Encode(WireParcel &parcel, Wire::Parcel::Builder builder)
{
    KJ_REQUIRE(parcel.objects.size() <= MAX_OBJECTS, "too many objects in one parcel");
    if (!parcel.values.empty()) {
        builder.setValues(kj::arrayPtr(parcel.values.data(), parcel.values.size()));
    }
    if (!parcel.objects.empty()) {
        auto entries = builder.initEntries(static_cast<kj::uint>(parcel.objects.size()));
        for (kj::uint i = 0; i < entries.size(); ++i) {
            EncodeObject(parcel.objects[i], entries[i]);
        }
    }
    if (parcel.block.size != 0) {
        builder.adoptBlock(capnp::Orphanage::getForMessageContaining(builder).referenceExternalData(
            capnp::Data::Reader(parcel.block.data, parcel.block.size)));
        messages_.Keep(parcel.block.data, parcel.block.owner);
    }
}

void LaneLoop::EncodeObject(WireObject &object, Wire::Entry::Builder entry)
{
    entry.setPosition(object.position);
    entry.setId(object.id);
    switch (object.kind) {
        case WireObject::Kind::EXPORTED:
            entry.setKind(Wire::Entry::Kind::EXPORTED);
            entry.setDescriptor(OHOS::Str16ToStr8(object.descriptor).c_str());
            if (object.hold != nullptr) {
                entry.setObject(kj::heap<RemoteObjectServer>(*this, object.id, object.hold));
            }
            break;
        case WireObject::Kind::HOME:
            // The far end finds its object by the id; sending our reference along keeps it there until then.
            entry.setKind(Wire::Entry::Kind::HOME);
            entry.setObject(ClientFor(std::static_pointer_cast<WireReference>(object.hold)));
            break;
        case WireObject::Kind::DESCRIPTOR:
            entry.setKind(Wire::Entry::Kind::DESCRIPTOR);
            entry.setObject(kj::heap<DescriptorServer>(object.fd));
            break;
    }
}

void LaneLoop::Decode(Wire::Parcel::Reader reader, WireParcel &parcel, kj::Vector<kj::Promise<void>> &waits)
{
    auto entries = reader.getEntries();
    KJ_REQUIRE(entries.size() <= MAX_OBJECTS, "too many objects in one parcel");
    auto values = reader.getValues();
    parcel.values.assign(values.begin(), values.end());
    parcel.objects.resize(entries.size());
    for (kj::uint i = 0; i < entries.size(); ++i) {
        DecodeEntry(entries[i], parcel.objects[i], waits);
    }
}

void LaneLoop::DecodeEntry(Wire::Entry::Reader reader, WireObject &object, kj::Vector<kj::Promise<void>> &waits)
{
    auto session = Session();
    KJ_REQUIRE(session != nullptr, "not joined");
    object.position = reader.getPosition();
    object.id = reader.getId();
    switch (reader.getKind()) {
        case Wire::Entry::Kind::EXPORTED: {
            auto text = reader.getDescriptor();
            KJ_REQUIRE(text.size() <= MAX_DESCRIPTOR_TEXT, "a descriptor is too long");
            object.kind = WireObject::Kind::EXPORTED;
            object.descriptor = OHOS::Str8ToStr16(std::string(text.cStr(), text.size()));
            if (reader.hasObject()) {
                auto reference = std::make_shared<WireReference>(session, object.id);
                clients_.emplace(reference->Key(), std::make_unique<Wire::RemoteObject::Client>(reader.getObject()));
                object.hold = std::move(reference);
            }
            break;
        }
        case Wire::Entry::Kind::HOME:
            object.kind = WireObject::Kind::HOME;
            object.object = session->FindExport(object.id);
            break;
        case Wire::Entry::Kind::DESCRIPTOR: {
            object.kind = WireObject::Kind::DESCRIPTOR;
            object.fd = std::make_shared<UniqueFd>();
            auto client = reader.getObject();
            auto taken = client.getFd().then([fd = object.fd](kj::Maybe<int> found) {
                KJ_IF_MAYBE (number, found) {
                    fd->Reset(fcntl(*number, F_DUPFD_CLOEXEC, 0));
                }
                KJ_REQUIRE(static_cast<bool>(*fd), "a file descriptor got lost");
            });
            waits.add(taken.attach(kj::mv(client)));
            break;
        }
        default:
            KJ_FAIL_REQUIRE("unknown kind of object");
    }
}

} // namespace Host::Ipc
