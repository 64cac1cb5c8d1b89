// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "crid_bytes.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base64.h"
#include "byte_buffer.h"

namespace Nubis {
namespace {
constexpr size_t BITS_PER_BYTE = 8;
} // namespace

void CridBytes::Append(std::vector<uint8_t> &bytes, uint64_t value, size_t size)
{
    for (size_t i = size; i > 0; --i) {
        bytes.push_back(static_cast<uint8_t>(value >> ((i - 1) * BITS_PER_BYTE)));
    }
}

uint64_t CridBytes::Read(const std::vector<uint8_t> &bytes, size_t offset, size_t size)
{
    uint64_t value = 0;
    size_t end = std::min(bytes.size(), offset + std::min(size, SIZE_64));
    for (size_t i = offset; i < end; ++i) {
        value = (value << BITS_PER_BYTE) | bytes[i];
    }
    return value;
}

std::string CridBytes::EncodeWords(char tag, std::initializer_list<uint64_t> words)
{
    std::vector<uint8_t> bytes;
    bytes.reserve(words.size() * SIZE_64);
    for (uint64_t word : words) {
        Append(bytes, word, SIZE_64);
    }
    std::string text(1, tag);
    Base64UrlEncode(bytes, text);
    return text;
}

std::vector<uint8_t> CridBytes::DecodeSpan(const std::string &text, size_t from, size_t count)
{
    std::vector<uint8_t> bytes;
    if (from < text.size()) {
        Base64UrlDecode(std::string_view(text).substr(from, count), bytes);
    }
    return bytes;
}

std::string CridBytes::HexOfId(uint64_t high, uint64_t low)
{
    std::array<uint8_t, SIZE_ID> bytes = {};
    for (size_t i = SIZE_64; i > 0; --i) {
        bytes[i - 1] = static_cast<uint8_t>(high);
        bytes[SIZE_64 + i - 1] = static_cast<uint8_t>(low);
        high >>= BITS_PER_BYTE;
        low >>= BITS_PER_BYTE;
    }
    return ByteBuffer::ToHexString(bytes.data(), bytes.size());
}

bool CridBytes::HasShape(const std::string &text, char tag, size_t length)
{
    return text.size() == length && text.front() == tag;
}

bool CridBytes::HasPrefixShape(const std::string &text, char tag, size_t minLength)
{
    return text.size() >= minLength && text.front() == tag;
}
} // namespace Nubis
