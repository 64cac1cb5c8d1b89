// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_CRID_BYTES_H
#define NUBIS_CRID_BYTES_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace Nubis {
// What the versions of the record identifier codec do alike.
class CridBytes {
public:
    static constexpr size_t SIZE_32 = 4;
    static constexpr size_t SIZE_64 = 8;
    // The two halves of a 128-bit id.
    static constexpr size_t SIZE_ID = 16;
    // A tag and the URL-safe Base64 form of 24 bytes.
    static constexpr size_t THREE_WORD_LENGTH = 33;
    // A tag and the hexadecimal form of 16 bytes.
    static constexpr size_t TAGGED_RID_LENGTH = 33;

    // Appends the low bytes of the value, most significant first.
    static void Append(std::vector<uint8_t> &bytes, uint64_t value, size_t size);
    // The value of up to size bytes from the offset, most significant first; 0 when there are none.
    static uint64_t Read(const std::vector<uint8_t> &bytes, size_t offset, size_t size);

    // The tag followed by the values in URL-safe Base64, eight bytes each.
    static std::string EncodeWords(char tag, std::initializer_list<uint64_t> words);
    // The bytes that stand in the text from the given place on, at most count characters of it.
    static std::vector<uint8_t> DecodeSpan(const std::string &text, size_t from, size_t count = std::string::npos);

    // The two values as 32 lower-case hexadecimal characters.
    static std::string HexOfId(uint64_t high, uint64_t low);

    // True for a text of this length that starts with the tag.
    static bool HasShape(const std::string &text, char tag, size_t length);
    // True for a text of at least this length that starts with the tag.
    static bool HasPrefixShape(const std::string &text, char tag, size_t minLength);
};

// The object of a crid when it belongs to the upid, else null.
template <typename T>
std::shared_ptr<T> DecodeCridOfUpid(uint64_t upid, const std::string &crid)
{
    std::shared_ptr<T> object = T::DecodeCrid(crid);
    return object != nullptr && object->GetUpid() == upid ? object : nullptr;
}
} // namespace Nubis

#endif // NUBIS_CRID_BYTES_H
