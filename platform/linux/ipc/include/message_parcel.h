// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_MESSAGE_PARCEL_H
#define OHOS_MESSAGE_PARCEL_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "parcel.h"
#include "refbase.h"

namespace Host::Ipc {
class ParcelCodec;
}

namespace OHOS {

class IRemoteObject;

// The data of one request or reply: values, plus remote objects, file descriptors and at most one large block of bytes,
// which travel beside the values. Owned by whoever sends or handles the request; one thread at a time. At its end it
// gives up the objects, descriptors and the block it carries.
class MessageParcel : public Parcel {
public:
    MessageParcel();
    explicit MessageParcel(Allocator *allocator);
    ~MessageParcel() override;

    // A token is int32 0x100, int32 0, then the UTF-16 name.
    bool WriteInterfaceToken(std::u16string name);
    // Empty when the next data is no token.
    std::u16string ReadInterfaceToken();
    // The token last written or read.
    std::u16string GetInterfaceToken() const;

    // False for null, with nothing written. The parcel keeps the object until it ends.
    bool WriteRemoteObject(const sptr<IRemoteObject> &object);
    // Null, with nothing read, when the next data is no remote object.
    sptr<IRemoteObject> ReadRemoteObject();

    // Copies `size` bytes into the parcel: an int32 with the size, then the bytes. False for null data and for sizes
    // outside 1 to 128 MiB. Blocks up to 32 KiB lie among the values and count towards the parcel's capacity; after a
    // larger one every further call gives false.
    bool WriteRawData(const void *data, size_t size);
    // The next block, when it has exactly `size` bytes, else null. The bytes belong to the parcel.
    const void *ReadRawData(size_t size);
    // The block last written or read; null and 0 when there was none.
    const void *GetRawData() const;
    size_t GetRawDataSize() const;
    // The largest block there can be, in bytes.
    size_t GetRawDataCapacity() const;

    // The parcel carries a duplicate; `fd` stays the caller's.
    bool WriteFileDescriptor(int fd);
    // A duplicate that the caller must close; -1 when the next data is no descriptor.
    int ReadFileDescriptor();

private:
    friend class Host::Ipc::ParcelCodec;

    struct Attachments;

    // Asked before writing in several steps, so that nothing half written stays behind.
    bool HasRoomFor(size_t size);
    bool WriteMark(uint32_t mark);
    // False, with nothing read, when something else comes next.
    bool ReadMark(uint32_t mark);

    std::unique_ptr<Attachments> attachments_;
};

} // namespace OHOS

#endif // OHOS_MESSAGE_PARCEL_H
