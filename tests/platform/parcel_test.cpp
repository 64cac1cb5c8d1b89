// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <functional>
#include <string>
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

using P = OHOS::Parcel;

// The writing of some value, and the reading of it in both forms, which tells whether it is the same.
struct Step {
    std::function<bool(P &)> write;
    std::function<bool(P &)> read;
};

template <typename T, typename Argument, typename Direct>
rc::Gen<Step> Values(bool (P::*write)(Argument), Direct (P::*direct)(), bool (P::*pair)(T &),
    const rc::Gen<T> &values = rc::gen::arbitrary<T>())
{
    return rc::gen::map(values, [=](const T &value) {
        const auto read = [=](P &parcel) {
            const size_t start = parcel.GetReadPosition();
            T again{};
            const bool same = (parcel.*direct)() == value && parcel.RewindRead(start) && (parcel.*pair)(again);
            return same && again == value;
        };
        return Step{[=](P &parcel) { return (parcel.*write)(value); }, read};
    });
}

rc::Gen<Step> Buffers(bool (P::*write)(const void *, size_t), const uint8_t *(P::*read)(size_t))
{
    return rc::gen::map(rc::gen::nonEmpty<Bytes>(), [=](const Bytes &bytes) {
        const auto isSame = [=](P &parcel) {
            const uint8_t *data = (parcel.*read)(bytes.size());
            return data != nullptr && Bytes(data, data + bytes.size()) == bytes;
        };
        return Step{[=](P &parcel) { return (parcel.*write)(bytes.data(), bytes.size()); }, isSame};
    });
}

rc::Gen<Step> AnyStep()
{
    const auto wide = rc::gen::map<Bytes>([](const Bytes &from) { return std::u16string(from.begin(), from.end()); });
    return rc::gen::oneOf(Values<bool>(&P::WriteBool, &P::ReadBool, &P::ReadBool),
        Values<int32_t>(&P::WriteInt32, &P::ReadInt32, &P::ReadInt32),
        Values<int64_t>(&P::WriteInt64, &P::ReadInt64, &P::ReadInt64),
        Values<uint32_t>(&P::WriteUint32, &P::ReadUint32, &P::ReadUint32),
        Values<uint64_t>(&P::WriteUint64, &P::ReadUint64, &P::ReadUint64),
        Values<std::string>(&P::WriteString, &P::ReadString, &P::ReadString),
        Values<std::u16string>(&P::WriteString16, &P::ReadString16, &P::ReadString16, wide),
        Buffers(&P::WriteBuffer, &P::ReadBuffer), Buffers(&P::WriteUnpadBuffer, &P::ReadUnpadBuffer));
}

RC_GTEST_PROP(Parcel, ValuesComeBackInTheirOrder, ())
{
    const auto steps = *rc::gen::container<std::vector<Step>>(AnyStep());
    WireParcel sent;
    for (const auto &step : steps) {
        RC_ASSERT(step.write(sent));
    }
    WireParcel received;
    const Bytes wire = sent.Wire();
    RC_ASSERT(received.LoadBytes(wire.data(), wire.size()));
    // Having written does not move the place to read from.
    for (WireParcel *parcel : {&sent, &received}) {
        for (const auto &step : steps) {
            RC_ASSERT(step.read(*parcel));
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
        if (read % 5 == 0) {
            RC_ASSERT(parcel.ReadString().size() <= wire.size());
        } else if (read % 5 == 1) {
            RC_ASSERT(parcel.ReadString16().size() <= wire.size());
        } else if (read % 5 == 2) {
            parcel.ReadUint64();
        } else if (read % 5 == 3) {
            RC_ASSERT(parcel.ReadBuffer(size % 16) == nullptr || size % 16 <= wire.size());
        } else {
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
    ASSERT_TRUE(parcel.WriteBool(true) && parcel.WriteString("abcd") && parcel.WriteString16(u"x"));
    ASSERT_TRUE(parcel.WriteBuffer("12345", 5) && parcel.WriteUnpadBuffer("67", 2));
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
    for (int32_t length : {-1, INT32_MIN, INT32_MAX, TOO_LONG}) {
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
    EXPECT_FALSE(parcel.WriteInt64(1) || parcel.WriteString("") || parcel.WriteBuffer("12345", 5));
    EXPECT_TRUE(parcel.WriteInt32(1));
    EXPECT_FALSE(parcel.WriteUnpadBuffer("1", 1));
    EXPECT_FALSE(parcel.SetMaxCapacity(LIMIT - 1));
    EXPECT_TRUE(parcel.SetMaxCapacity(LIMIT + 1));
    EXPECT_TRUE(parcel.WriteUnpadBuffer("1", 1));
    EXPECT_EQ(parcel.ReadString(), most);
    parcel.FlushBuffer();
    EXPECT_EQ(parcel.GetDataSize() + parcel.GetReadPosition() + parcel.GetWritePosition(), 0u);
    EXPECT_TRUE(parcel.SetMaxCapacity(SIZE_MAX));
    EXPECT_FALSE(parcel.WriteBuffer(most.data(), SIZE_MAX));
}

TEST(Parcel, PositionsCanBeMovedWithinTheData)
{
    OHOS::Parcel parcel;
    for (int32_t value : {1, 2, 3}) {
        parcel.WriteInt32(value);
    }
    EXPECT_FALSE(parcel.RewindWrite(13) || parcel.RewindRead(13));
    ASSERT_TRUE(parcel.RewindWrite(4) && parcel.WriteInt32(20));
    EXPECT_EQ(parcel.GetWritePosition(), 8u);
    EXPECT_EQ(parcel.GetDataSize(), 12u);
    ASSERT_TRUE(parcel.RewindRead(4));
    EXPECT_EQ(parcel.ReadInt32(), 20);
    EXPECT_EQ(parcel.ReadInt32(), 3);
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
