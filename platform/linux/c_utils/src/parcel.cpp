// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "parcel.h"

namespace OHOS {
namespace {

constexpr size_t DEFAULT_MAX_CAPACITY = 204800;
constexpr size_t MIN_ALLOCATION = 128;
constexpr size_t ALIGNMENT = 4;

// Wraps round to 0 for the very largest sizes.
size_t Padded(size_t size)
{
    return (size + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
}

} // namespace

void *DefaultAllocator::Alloc(size_t size)
{
    return std::malloc(size);
}

void *DefaultAllocator::Realloc(void *data, size_t newSize)
{
    return std::realloc(data, newSize);
}

void DefaultAllocator::Dealloc(void *data)
{
    std::free(data);
}

Parcel::Parcel() : Parcel(nullptr)
{}

Parcel::Parcel(Allocator *allocator)
    : allocator_(allocator != nullptr ? allocator : new DefaultAllocator()), maxCapacity_(DEFAULT_MAX_CAPACITY)
{}

Parcel::~Parcel()
{
    allocator_->Dealloc(data_);
}

bool Parcel::Reserve(size_t size)
{
    if (size <= capacity_) {
        return true;
    }
    size_t wanted = std::max({size, capacity_ * 2, MIN_ALLOCATION});
    void *grown = data_ == nullptr ? allocator_->Alloc(wanted) : allocator_->Realloc(data_, wanted);
    if (grown == nullptr) {
        return false;
    }
    data_ = static_cast<uint8_t *>(grown);
    capacity_ = wanted;
    return true;
}

bool Parcel::HasRoom(size_t size)
{
    return size <= maxCapacity_ - std::min(maxCapacity_, writePosition_) && Reserve(writePosition_ + size);
}

void Parcel::Append(const void *data, size_t size, size_t paddedSize)
{
    uint8_t *target = data_ + writePosition_;
    std::memcpy(target, data, size);
    std::memset(target + size, 0, paddedSize - size);
    writePosition_ += paddedSize;
    dataSize_ = std::max(dataSize_, writePosition_);
}

template <typename T>
bool Parcel::WriteValue(T value)
{
    if (!HasRoom(sizeof(value))) {
        return false;
    }
    Append(&value, sizeof(value), sizeof(value));
    return true;
}

template <typename T>
bool Parcel::ReadValue(T &value)
{
    if (GetReadableBytes() < sizeof(value)) {
        return false;
    }
    std::memcpy(&value, data_ + readPosition_, sizeof(value));
    readPosition_ += sizeof(value);
    return true;
}

// Length in characters, the characters, a terminator.
template <typename Char>
bool Parcel::WriteText(const std::basic_string<Char> &value)
{
    if (value.size() >= static_cast<size_t>(std::numeric_limits<int32_t>::max()) / sizeof(Char)) {
        return false;
    }
    size_t size = (value.size() + 1) * sizeof(Char);
    if (!HasRoom(sizeof(int32_t) + Padded(size))) {
        return false;
    }
    auto length = static_cast<int32_t>(value.size());
    Append(&length, sizeof(length), sizeof(length));
    Append(value.c_str(), size, Padded(size));
    return true;
}

template <typename Char>
bool Parcel::ReadText(std::basic_string<Char> &value)
{
    size_t start = readPosition_;
    int32_t length = 0;
    if (!ReadValue(length)) {
        return false;
    }
    // A length that is not below the number of bytes left cannot be right; checked first, it also keeps the sums small.
    const auto count = static_cast<size_t>(length);
    if (length < 0 || count >= GetReadableBytes() || Padded((count + 1) * sizeof(Char)) > GetReadableBytes()) {
        readPosition_ = start;
        return false;
    }
    try {
        value.resize(count);
    } catch (const std::bad_alloc &) {
        readPosition_ = start;
        return false;
    }
    std::memcpy(value.data(), data_ + readPosition_, count * sizeof(Char));
    readPosition_ += Padded((count + 1) * sizeof(Char));
    return true;
}

bool Parcel::WriteBool(bool value)
{
    return WriteValue<int32_t>(value ? 1 : 0);
}

bool Parcel::WriteInt32(int32_t value)
{
    return WriteValue(value);
}

bool Parcel::WriteInt64(int64_t value)
{
    return WriteValue(value);
}

bool Parcel::WriteUint32(uint32_t value)
{
    return WriteValue(value);
}

bool Parcel::WriteUint64(uint64_t value)
{
    return WriteValue(value);
}

bool Parcel::WriteString(const std::string &value)
{
    return WriteText(value);
}

bool Parcel::WriteString16(const std::u16string &value)
{
    return WriteText(value);
}

bool Parcel::WriteBuffer(const void *data, size_t size)
{
    if (data == nullptr || size == 0 || Padded(size) < size || !HasRoom(Padded(size))) {
        return false;
    }
    Append(data, size, Padded(size));
    return true;
}

bool Parcel::WriteUnpadBuffer(const void *data, size_t size)
{
    if (data == nullptr || size == 0 || !HasRoom(size)) {
        return false;
    }
    Append(data, size, size);
    return true;
}

bool Parcel::ReadBool()
{
    return ReadInt32() != 0;
}

int32_t Parcel::ReadInt32()
{
    int32_t value = 0;
    ReadValue(value);
    return value;
}

int64_t Parcel::ReadInt64()
{
    int64_t value = 0;
    ReadValue(value);
    return value;
}

uint32_t Parcel::ReadUint32()
{
    uint32_t value = 0;
    ReadValue(value);
    return value;
}

uint64_t Parcel::ReadUint64()
{
    uint64_t value = 0;
    ReadValue(value);
    return value;
}

bool Parcel::ReadBool(bool &value)
{
    int32_t number = 0;
    if (!ReadValue(number)) {
        return false;
    }
    value = number != 0;
    return true;
}

bool Parcel::ReadInt32(int32_t &value)
{
    return ReadValue(value);
}

bool Parcel::ReadInt64(int64_t &value)
{
    return ReadValue(value);
}

bool Parcel::ReadUint32(uint32_t &value)
{
    return ReadValue(value);
}

bool Parcel::ReadUint64(uint64_t &value)
{
    return ReadValue(value);
}

const std::string Parcel::ReadString()
{
    std::string value;
    ReadText(value);
    return value;
}

const std::u16string Parcel::ReadString16()
{
    std::u16string value;
    ReadText(value);
    return value;
}

bool Parcel::ReadString(std::string &value)
{
    return ReadText(value);
}

bool Parcel::ReadString16(std::u16string &value)
{
    return ReadText(value);
}

const uint8_t *Parcel::ReadBuffer(size_t length)
{
    if (length > GetReadableBytes()) {
        return nullptr;
    }
    return ReadUnpadBuffer(Padded(length));
}

const uint8_t *Parcel::ReadUnpadBuffer(size_t length)
{
    if (length > GetReadableBytes()) {
        return nullptr;
    }
    const uint8_t *start = data_ == nullptr ? nullptr : data_ + readPosition_;
    readPosition_ += length;
    return start;
}

size_t Parcel::GetDataSize() const
{
    return dataSize_;
}

size_t Parcel::GetReadableBytes() const
{
    return dataSize_ - readPosition_;
}

size_t Parcel::GetReadPosition()
{
    return readPosition_;
}

size_t Parcel::GetWritePosition()
{
    return writePosition_;
}

bool Parcel::RewindRead(size_t newPosition)
{
    if (newPosition > dataSize_) {
        return false;
    }
    readPosition_ = newPosition;
    return true;
}

bool Parcel::RewindWrite(size_t offsets)
{
    if (offsets > dataSize_) {
        return false;
    }
    writePosition_ = offsets;
    return true;
}

size_t Parcel::GetMaxCapacity() const
{
    return maxCapacity_;
}

bool Parcel::SetMaxCapacity(size_t maxCapacity)
{
    if (maxCapacity < dataSize_) {
        return false;
    }
    maxCapacity_ = maxCapacity;
    return true;
}

void Parcel::FlushBuffer()
{
    allocator_->Dealloc(data_);
    data_ = nullptr;
    capacity_ = 0;
    dataSize_ = 0;
    readPosition_ = 0;
    writePosition_ = 0;
}

const uint8_t *Parcel::GetBytes() const
{
    return dataSize_ == 0 ? nullptr : data_;
}

bool Parcel::LoadBytes(const void *data, size_t size)
{
    if (!Reserve(size)) {
        return false;
    }
    if (size > 0) {
        std::memcpy(data_, data, size);
    }
    dataSize_ = size;
    writePosition_ = size;
    readPosition_ = 0;
    maxCapacity_ = std::max(maxCapacity_, size);
    return true;
}

} // namespace OHOS
