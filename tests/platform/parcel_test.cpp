// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "parcel.h"

namespace {

using Bytes = std::vector<uint8_t>;

class WireParcel : public OHOS::Parcel {
public:
    using Parcel::LoadBytes;
    using Parcel::Parcel;

    Bytes Wire() const
    {
        const uint8_t *bytes = GetBytes();
        return bytes == nullptr ? Bytes() : Bytes(bytes, bytes + GetDataSize());
    }
};

struct Padded {
    Bytes bytes;
};

struct Unpadded {
    Bytes bytes;
};

using Value = std::variant<bool, int32_t, int64_t, uint32_t, uint64_t, std::string, std::u16string, Padded, Unpadded>;

struct Writer {
    OHOS::Parcel &parcel;

    bool operator()(bool value)
    {
        return parcel.WriteBool(value);
    }
    bool operator()(int32_t value)
    {
        return parcel.WriteInt32(value);
    }
    bool operator()(int64_t value)
    {
        return parcel.WriteInt64(value);
    }
    bool operator()(uint32_t value)
    {
        return parcel.WriteUint32(value);
    }
    bool operator()(uint64_t value)
    {
        return parcel.WriteUint64(value);
    }
    bool operator()(const std::string &value)
    {
        return parcel.WriteString(value);
    }
    bool operator()(const std::u16string &value)
    {
        return parcel.WriteString16(value);
    }
    bool operator()(const Padded &value)
    {
        return parcel.WriteBuffer(value.bytes.data(), value.bytes.size());
    }
    bool operator()(const Unpadded &value)
    {
        return parcel.WriteUnpadBuffer(value.bytes.data(), value.bytes.size());
    }
};

// Reads a value of the type it is given and tells whether it is the same, through both forms of reading.
struct Reader {
    OHOS::Parcel &parcel;

    template <typename T>
    bool Both(const T &expected, const T (OHOS::Parcel::*direct)(), bool (OHOS::Parcel::*pair)(T &))
    {
        size_t start = parcel.GetReadPosition();
        T value{};
        bool same = (parcel.*direct)() == expected && parcel.RewindRead(start) && (parcel.*pair)(value);
        return same && value == expected;
    }

    template <typename T>
    bool Both(const T &expected, T (OHOS::Parcel::*direct)(), bool (OHOS::Parcel::*pair)(T &))
    {
        size_t start = parcel.GetReadPosition();
        T value{};
        bool same = (parcel.*direct)() == expected && parcel.RewindRead(start) && (parcel.*pair)(value);
        return same && value == expected;
    }

    static bool Same(const uint8_t *data, const Bytes &expected)
    {
        return data != nullptr && Bytes(data, data + expected.size()) == expected;
    }

    using P = OHOS::Parcel;
    bool operator()(bool value)
    {
        return Both<bool>(value, &P::ReadBool, &P::ReadBool);
    }
    bool operator()(int32_t value)
    {
        return Both<int32_t>(value, &P::ReadInt32, &P::ReadInt32);
    }
    bool operator()(int64_t value)
    {
        return Both<int64_t>(value, &P::ReadInt64, &P::ReadInt64);
    }
    bool operator()(uint32_t value)
    {
        return Both<uint32_t>(value, &P::ReadUint32, &P::ReadUint32);
    }
    bool operator()(uint64_t value)
    {
        return Both<uint64_t>(value, &P::ReadUint64, &P::ReadUint64);
    }
    bool operator()(const std::string &value)
    {
        return Both<std::string>(value, &P::ReadString, &P::ReadString);
    }
    bool operator()(const std::u16string &value)
    {
        return Both<std::u16string>(value, &P::ReadString16, &P::ReadString16);
    }
    bool operator()(const Padded &value)
    {
        return Same(parcel.ReadBuffer(value.bytes.size()), value.bytes);
    }
    bool operator()(const Unpadded &value)
    {
        return Same(parcel.ReadUnpadBuffer(value.bytes.size()), value.bytes);
    }
};

rc::Gen<Value> AnyValue()
{
    auto bytes = rc::gen::nonEmpty<Bytes>();
    return rc::gen::oneOf(rc::gen::cast<Value>(rc::gen::arbitrary<bool>()),
        rc::gen::cast<Value>(rc::gen::arbitrary<int32_t>()), rc::gen::cast<Value>(rc::gen::arbitrary<int64_t>()),
        rc::gen::cast<Value>(rc::gen::arbitrary<uint32_t>()), rc::gen::cast<Value>(rc::gen::arbitrary<uint64_t>()),
        rc::gen::cast<Value>(rc::gen::arbitrary<std::string>()),
        rc::gen::map<Bytes>([](const Bytes &from) { return Value(std::u16string(from.begin(), from.end())); }),
        rc::gen::map(bytes, [](Bytes from) { return Value(Padded{std::move(from)}); }),
        rc::gen::map(bytes, [](Bytes from) { return Value(Unpadded{std::move(from)}); }));
}

RC_GTEST_PROP(Parcel, ValuesComeBackInTheirOrder, ())
{
    const auto values = *rc::gen::container<std::vector<Value>>(AnyValue());
    WireParcel sent;
    for (const auto &value : values) {
        RC_ASSERT(std::visit(Writer{sent}, value));
    }
    WireParcel received;
    const Bytes wire = sent.Wire();
    RC_ASSERT(received.LoadBytes(wire.data(), wire.size()));
    // Having written does not move the place to read from.
    for (WireParcel *parcel : {&sent, &received}) {
        for (const auto &value : values) {
            RC_ASSERT(std::visit(Reader{*parcel}, value));
        }
        RC_ASSERT(parcel->GetReadableBytes() == 0u);
        RC_ASSERT(parcel->ReadInt64() == 0);
        RC_ASSERT(parcel->ReadBuffer(1) == nullptr);
    }
}

RC_GTEST_PROP(Parcel, HostileBytesAreHarmless, (const Bytes &wire, const std::vector<uint8_t> &reads, uint32_t size))
{
    WireParcel parcel;
    RC_ASSERT(parcel.LoadBytes(wire.data(), wire.size()));
    for (uint8_t read : reads) {
        size_t before = parcel.GetReadPosition();
        switch (read % 6) {
            case 0:
                RC_ASSERT(parcel.ReadString().size() <= wire.size());
                break;
            case 1:
                RC_ASSERT(parcel.ReadString16().size() <= wire.size());
                break;
            case 2:
                parcel.ReadBool();
                break;
            case 3:
                parcel.ReadUint64();
                break;
            case 4:
                RC_ASSERT(parcel.ReadBuffer(size % 16) == nullptr || size % 16 <= wire.size());
                break;
            default:
                RC_ASSERT(parcel.ReadUnpadBuffer(SIZE_MAX - size) == nullptr);
                RC_ASSERT(parcel.ReadBuffer(SIZE_MAX - size) == nullptr);
        }
        RC_ASSERT(parcel.GetReadPosition() >= before);
        RC_ASSERT(parcel.GetReadPosition() + parcel.GetReadableBytes() == wire.size());
    }
}

TEST(Parcel, LaysValuesOutInWords)
{
    WireParcel parcel;
    ASSERT_TRUE(parcel.WriteBool(true));
    ASSERT_TRUE(parcel.WriteString("abcd"));
    ASSERT_TRUE(parcel.WriteString16(u"x"));
    ASSERT_TRUE(parcel.WriteBuffer("12345", 5));
    ASSERT_TRUE(parcel.WriteUnpadBuffer("67", 2));
    const Bytes expected = {1, 0, 0, 0, 4, 0, 0, 0, 'a', 'b', 'c', 'd', 0, 0, 0, 0, 1, 0, 0, 0, 'x', 0, 0, 0, '1', '2',
        '3', '4', '5', 0, 0, 0, '6', '7'};
    EXPECT_EQ(parcel.Wire(), expected);
    EXPECT_FALSE(parcel.WriteBuffer(nullptr, 4));
    EXPECT_FALSE(parcel.WriteUnpadBuffer("", 0));
    EXPECT_EQ(parcel.GetDataSize(), expected.size());
}

TEST(Parcel, LengthsThatCannotBeAreRefused)
{
    constexpr int32_t TOO_LONG = 5; // with the terminator, what follows holds 4 characters at most
    for (int32_t length :
        {-1, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(), TOO_LONG, 12}) {
        OHOS::Parcel parcel;
        ASSERT_TRUE(parcel.WriteInt32(length));
        ASSERT_TRUE(parcel.WriteBuffer("\0\0\0\0", 4));
        std::string text = "kept";
        EXPECT_FALSE(parcel.ReadString(text)) << length;
        EXPECT_EQ(text, "kept");
        std::u16string wide = u"kept";
        EXPECT_FALSE(parcel.ReadString16(wide)) << length;
        EXPECT_EQ(wide, u"kept");
        EXPECT_EQ(parcel.ReadInt32(), length);
    }
}

TEST(Parcel, KeepsToItsCapacity)
{
    constexpr size_t LIMIT = 204800;
    OHOS::Parcel parcel;
    EXPECT_EQ(parcel.GetMaxCapacity(), LIMIT);
    const std::string most(LIMIT - 12, 'x');
    EXPECT_FALSE(parcel.WriteString(std::string(LIMIT - 4, 'x')));
    EXPECT_FALSE(parcel.WriteBuffer(most.data(), SIZE_MAX));
    EXPECT_EQ(parcel.GetDataSize(), 0u);
    ASSERT_TRUE(parcel.WriteString(most));
    EXPECT_EQ(parcel.GetDataSize(), LIMIT - 4);
    EXPECT_FALSE(parcel.WriteInt64(1));
    EXPECT_FALSE(parcel.WriteString(""));
    EXPECT_FALSE(parcel.WriteBuffer("12345", 5));
    EXPECT_TRUE(parcel.WriteInt32(1));
    EXPECT_FALSE(parcel.WriteUnpadBuffer("1", 1));
    EXPECT_FALSE(parcel.SetMaxCapacity(LIMIT - 1));
    EXPECT_TRUE(parcel.SetMaxCapacity(LIMIT + 1));
    EXPECT_TRUE(parcel.WriteUnpadBuffer("1", 1));
    EXPECT_EQ(parcel.ReadString(), most);
    parcel.FlushBuffer();
    EXPECT_EQ(parcel.GetDataSize() + parcel.GetReadPosition() + parcel.GetWritePosition(), 0u);
    EXPECT_TRUE(parcel.WriteInt64(7));
    EXPECT_EQ(parcel.ReadInt64(), 7);
    EXPECT_TRUE(parcel.SetMaxCapacity(SIZE_MAX));
    EXPECT_FALSE(parcel.WriteBuffer(most.data(), SIZE_MAX));
}

TEST(Parcel, PositionsCanBeMovedWithinTheData)
{
    OHOS::Parcel parcel;
    for (int32_t value : {1, 2, 3}) {
        parcel.WriteInt32(value);
    }
    EXPECT_FALSE(parcel.RewindWrite(13));
    EXPECT_FALSE(parcel.RewindRead(13));
    ASSERT_TRUE(parcel.RewindWrite(4));
    ASSERT_TRUE(parcel.WriteInt32(20));
    EXPECT_EQ(parcel.GetWritePosition(), 8u);
    EXPECT_EQ(parcel.GetDataSize(), 12u);
    ASSERT_TRUE(parcel.RewindRead(4));
    EXPECT_EQ(parcel.ReadInt32(), 20);
    EXPECT_EQ(parcel.ReadInt32(), 3);
    ASSERT_TRUE(parcel.RewindRead(0));
    EXPECT_EQ(parcel.ReadInt32(), 1);
}

class ScantAllocator : public OHOS::DefaultAllocator {
public:
    explicit ScantAllocator(size_t limit) : limit_(limit)
    {}

    void *Realloc(void *data, size_t newSize) override
    {
        return newSize > limit_ ? nullptr : DefaultAllocator::Realloc(data, newSize);
    }

private:
    size_t limit_;
};

TEST(Parcel, WithoutMemoryNothingIsWritten)
{
    constexpr size_t LIMIT = 4096;
    OHOS::Parcel parcel(new ScantAllocator(LIMIT));
    size_t written = 0;
    while (parcel.WriteInt32(static_cast<int32_t>(written)) && written < LIMIT) {
        ++written;
    }
    EXPECT_EQ(parcel.GetDataSize(), written * sizeof(int32_t));
    EXPECT_LE(parcel.GetDataSize(), LIMIT);
    ASSERT_TRUE(parcel.RewindRead(parcel.GetDataSize() - sizeof(int32_t)));
    EXPECT_EQ(parcel.ReadInt32(), static_cast<int32_t>(written) - 1);
}

} // namespace
