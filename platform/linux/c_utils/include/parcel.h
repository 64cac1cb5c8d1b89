// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_PARCEL_H
#define OHOS_PARCEL_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "nocopyable.h"
#include "refbase.h"

namespace OHOS {

class Parcel;

// An object that can be written into a parcel.
class Parcelable : public virtual RefBase {
public:
    Parcelable() = default;
    Parcelable(const Parcelable &) = default;
    Parcelable &operator=(const Parcelable &) = default;
    Parcelable(Parcelable &&) = default;
    Parcelable &operator=(Parcelable &&) = default;
    ~Parcelable() override = default;

    // False when it could not be written; what was written until then stays in the parcel.
    virtual bool Marshalling(Parcel &parcel) const = 0;
};

// Where a parcel's bytes come from.
class Allocator {
public:
    virtual ~Allocator() = default;
    // All three behave as malloc, realloc and free do: null when there is no memory.
    virtual void *Alloc(size_t size) = 0;
    virtual void *Realloc(void *data, size_t newSize) = 0;
    virtual void Dealloc(void *data) = 0;
};

class DefaultAllocator : public Allocator {
public:
    void *Alloc(size_t size) override;
    void *Realloc(void *data, size_t newSize) override;
    void Dealloc(void *data) override;
};

// A sequence of values for another process. Values take multiples of 4 bytes (a bool is an int32; strings and buffers are
// padded with zeros), except for those of WriteUnpadBuffer. Reading and writing have positions of their own. The reader
// must ask for the same types in the same order; whatever it asks for, reading is safe on any contents.
//
// Owned by whoever created it; to be used by one thread at a time. Nothing throws.
class Parcel {
public:
    Parcel();
    // Takes the allocator over; null means the default one.
    explicit Parcel(Allocator *allocator);
    virtual ~Parcel();
    DISALLOW_COPY_AND_MOVE(Parcel);

    // Writing: false, with nothing written, when the data would exceed the capacity limit or memory is short. Strings may
    // hold zero characters.
    bool WriteBool(bool value);
    bool WriteInt32(int32_t value);
    bool WriteInt64(int64_t value);
    bool WriteUint32(uint32_t value);
    bool WriteUint64(uint64_t value);
    bool WriteString(const std::string &value);
    bool WriteString16(const std::u16string &value);
    // False also for null or nothing.
    bool WriteBuffer(const void *data, size_t size);
    bool WriteUnpadBuffer(const void *data, size_t size);

    // Reading: past the end, or where no such value can stand, the position stays, and the result is 0, false, an empty
    // string or null. The pair form tells that by its result and leaves `value` as it was.
    bool ReadBool();
    int32_t ReadInt32();
    int64_t ReadInt64();
    uint32_t ReadUint32();
    uint64_t ReadUint64();
    bool ReadBool(bool &value);
    bool ReadInt32(int32_t &value);
    bool ReadInt64(int64_t &value);
    bool ReadUint32(uint32_t &value);
    bool ReadUint64(uint64_t &value);
    const std::string ReadString();
    const std::u16string ReadString16();
    bool ReadString(std::string &value);
    bool ReadString16(std::u16string &value);
    // The pointer is into the parcel and valid until the next write, FlushBuffer, or the parcel's end. No alignment.
    const uint8_t *ReadBuffer(size_t length);
    const uint8_t *ReadUnpadBuffer(size_t length);

    // All in bytes.
    size_t GetDataSize() const;
    size_t GetReadableBytes() const;
    size_t GetReadPosition();
    size_t GetWritePosition();
    // False beyond the data. After RewindWrite writing replaces what stands there.
    bool RewindRead(size_t newPosition);
    bool RewindWrite(size_t offsets);

    // The limit for the data, 204800 at first. It cannot be set below what is already in the parcel.
    size_t GetMaxCapacity() const;
    bool SetMaxCapacity(size_t maxCapacity);

    // Drops all data; the limit stays.
    void FlushBuffer();

protected:
    // The data as it stands on the wire; null when there is none. Valid as the pointers of ReadBuffer are.
    const uint8_t *GetBytes() const;
    // Replaces the data by a copy of these bytes, both positions at the start of reading and the end of writing. Received
    // data was admitted by its sender's limit, so it may exceed this parcel's, which is raised to its size. False, with the
    // parcel as it was, when memory is short.
    bool LoadBytes(const void *data, size_t size);

private:
    template <typename T>
    bool WriteValue(T value);
    template <typename T>
    bool ReadValue(T &value);
    template <typename Char>
    bool WriteText(const std::basic_string<Char> &value);
    template <typename Char>
    bool ReadText(std::basic_string<Char> &value);

    bool Reserve(size_t size);
    bool HasRoom(size_t size);
    void Append(const void *data, size_t size, size_t paddedSize);

    std::unique_ptr<Allocator> allocator_;
    uint8_t *data_ = nullptr;
    size_t capacity_ = 0;
    size_t maxCapacity_;
    size_t dataSize_ = 0;
    size_t readPosition_ = 0;
    size_t writePosition_ = 0;
};

} // namespace OHOS

#endif // OHOS_PARCEL_H
