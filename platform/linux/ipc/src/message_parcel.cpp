// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "message_parcel.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <utility>

#include "iremote_object.h"
#include "parcel_attachments.h"

namespace OHOS {

namespace {

constexpr int32_t TOKEN_HEADER = 0x100;
constexpr size_t MAX_INLINE_RAW_SIZE = size_t{32} * 1024;
constexpr size_t MAX_RAW_SIZE = size_t{128} * 1024 * 1024;

} // namespace

MessageParcel::MessageParcel() : attachments_(std::make_unique<Attachments>())
{}

MessageParcel::MessageParcel(Allocator *allocator) : Parcel(allocator), attachments_(std::make_unique<Attachments>())
{}

MessageParcel::~MessageParcel() = default;

bool MessageParcel::WriteInterfaceToken(std::u16string name)
{
    size_t start = GetWritePosition();
    if (!WriteInt32(TOKEN_HEADER) || !WriteInt32(0) || !WriteString16(name)) {
        RewindWrite(start);
        return false;
    }
    attachments_->token = std::move(name);
    return true;
}

std::u16string MessageParcel::ReadInterfaceToken()
{
    size_t start = GetReadPosition();
    int32_t header = 0;
    int32_t workSource = 0;
    std::u16string name;
    if (!ReadInt32(header) || header != TOKEN_HEADER || !ReadInt32(workSource) || !ReadString16(name)) {
        RewindRead(start);
        return std::u16string();
    }
    attachments_->token = name;
    return name;
}

std::u16string MessageParcel::GetInterfaceToken() const
{
    return attachments_->token;
}

bool MessageParcel::HasRoomFor(size_t size)
{
    return size <= GetMaxCapacity() && GetWritePosition() <= GetMaxCapacity() - size;
}

bool MessageParcel::WriteMark(uint32_t mark)
{
    return HasRoomFor(2 * sizeof(uint32_t)) && WriteUint32(mark) && WriteUint32(0);
}

bool MessageParcel::ReadMark(uint32_t mark)
{
    size_t start = GetReadPosition();
    uint32_t found = 0;
    uint32_t padding = 0;
    if (!ReadUint32(found) || found != mark || !ReadUint32(padding)) {
        RewindRead(start);
        return false;
    }
    return true;
}

bool MessageParcel::WriteRemoteObject(const sptr<IRemoteObject> &object)
{
    size_t position = GetWritePosition();
    if (object == nullptr || !WriteMark(Attachments::OBJECT_MARK)) {
        return false;
    }
    attachments_->items[position] = Attachments::Item{object, nullptr};
    return true;
}

sptr<IRemoteObject> MessageParcel::ReadRemoteObject()
{
    auto found = attachments_->items.find(GetReadPosition());
    if (found == attachments_->items.end() || found->second.object == nullptr || !ReadMark(Attachments::OBJECT_MARK)) {
        return nullptr;
    }
    return found->second.object;
}

bool MessageParcel::WriteRawData(const void *data, size_t size)
{
    if (data == nullptr || size == 0 || size > MAX_RAW_SIZE || attachments_->block.size != 0) {
        return false;
    }
    size_t start = GetWritePosition();
    bool beside = size > MAX_INLINE_RAW_SIZE;
    Host::Ipc::RawBlock block = beside ? Host::Ipc::RawBlock::CopyOf(data, size) : Host::Ipc::RawBlock();
    if ((beside && block.data == nullptr) || !HasRoomFor(beside ? sizeof(int32_t) : sizeof(int32_t) + size) ||
        !WriteInt32(static_cast<int32_t>(size)) || (!beside && !WriteUnpadBuffer(data, size))) {
        return false;
    }
    attachments_->block = std::move(block);
    attachments_->lastRawBeside = beside;
    attachments_->lastRawPosition = start + sizeof(int32_t);
    attachments_->lastRawSize = size;
    return true;
}

const void *MessageParcel::ReadRawData(size_t size)
{
    int32_t written = 0;
    if (!ReadInt32(written) || size == 0 || size > MAX_RAW_SIZE || static_cast<size_t>(written) != size) {
        return nullptr;
    }
    bool beside = size > MAX_INLINE_RAW_SIZE;
    size_t position = GetReadPosition();
    if (beside ? attachments_->block.size != size : ReadUnpadBuffer(size) == nullptr) {
        return nullptr;
    }
    attachments_->lastRawBeside = beside;
    attachments_->lastRawPosition = position;
    attachments_->lastRawSize = size;
    return GetRawData();
}

const void *MessageParcel::GetRawData() const
{
    if (attachments_->lastRawSize == 0) {
        return nullptr;
    }
    return attachments_->lastRawBeside ? attachments_->block.data : GetBytes() + attachments_->lastRawPosition;
}

size_t MessageParcel::GetRawDataSize() const
{
    return attachments_->lastRawSize;
}

size_t MessageParcel::GetRawDataCapacity() const
{
    return MAX_RAW_SIZE;
}

bool MessageParcel::WriteFileDescriptor(int fd)
{
    auto copy = std::make_shared<Host::Ipc::UniqueFd>(fd < 0 ? -1 : fcntl(fd, F_DUPFD_CLOEXEC, 0));
    size_t position = GetWritePosition();
    if (!*copy || !WriteMark(Attachments::DESCRIPTOR_MARK)) {
        return false;
    }
    attachments_->items[position] = Attachments::Item{nullptr, std::move(copy)};
    return true;
}

int MessageParcel::ReadFileDescriptor()
{
    auto found = attachments_->items.find(GetReadPosition());
    if (found == attachments_->items.end() || found->second.fd == nullptr || !ReadMark(Attachments::DESCRIPTOR_MARK)) {
        return -1;
    }
    return fcntl(found->second.fd->Get(), F_DUPFD_CLOEXEC, 0);
}

} // namespace OHOS

namespace Host::Ipc {

RawBlock RawBlock::CopyOf(const void *data, size_t size)
{
    constexpr size_t word = sizeof(uint64_t);
    size_t words = (size + word - 1) / word;
    auto *memory = static_cast<uint64_t *>(std::malloc(words * word));
    if (memory == nullptr) {
        return RawBlock();
    }
    memory[words - 1] = 0;
    std::memcpy(memory, data, size);
    RawBlock block;
    block.owner = std::shared_ptr<const void>(memory, [](const void *bytes) { std::free(const_cast<void *>(bytes)); });
    block.data = reinterpret_cast<const uint8_t *>(memory);
    block.size = size;
    return block;
}

} // namespace Host::Ipc
