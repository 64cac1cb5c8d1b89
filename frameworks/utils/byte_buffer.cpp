// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "byte_buffer.h"

#include <openssl/sha.h>

#include "securec.h"

#include "base64.h"
#include "log.h"

namespace Nubis {
namespace {
constexpr char HEX_DIGITS[] = "0123456789abcdef";
constexpr int BITS_PER_DIGIT = 4;
constexpr int DIGIT_MASK = 0x0F;
constexpr size_t DIGITS_PER_BYTE = 2;

int HexDigitValue(char digit)
{
    constexpr int ten = 10;
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + ten;
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + ten;
    }
    return -1;
}

// Appends the bytes of the text's pairs; yields where reading ended: the text's size, or the first bad pair.
size_t AppendHex(const std::string &text, std::vector<uint8_t> &bytes)
{
    size_t pairs = text.size() / DIGITS_PER_BYTE;
    bytes.reserve(bytes.size() + pairs);
    for (size_t i = 0; i < pairs; ++i) {
        int high = HexDigitValue(text[i * DIGITS_PER_BYTE]);
        int low = HexDigitValue(text[i * DIGITS_PER_BYTE + 1]);
        if (high < 0 || low < 0) {
            return i * DIGITS_PER_BYTE;
        }
        bytes.push_back(static_cast<uint8_t>((high << BITS_PER_DIGIT) | low));
    }
    return text.size();
}
} // namespace

void ByteBuffer::FromHexString(std::string text)
{
    size_t end = AppendHex(text, bytes_);
    if (end < text.size()) {
        NB_LOGE("bytebuffer form hex string failed, string:%{public}s", text.c_str() + end);
    }
}

void ByteBuffer::FromByteArray(const uint8_t *data, size_t length)
{
    if (data != nullptr && length > 0) {
        bytes_.insert(bytes_.end(), data, data + length);
    }
}

bool ByteBuffer::GetByteArray(uint8_t *data, size_t capacity) const
{
    if (capacity < bytes_.size()) {
        return false;
    }
    if (bytes_.empty()) {
        return true;
    }
    return memcpy_s(data, capacity, bytes_.data(), bytes_.size()) == EOK;
}

size_t ByteBuffer::GetSize() const
{
    return bytes_.size();
}

std::vector<uint8_t> ByteBuffer::HexStringToValueArray(const std::string &text)
{
    std::vector<uint8_t> bytes;
    size_t end = AppendHex(text, bytes);
    if (end < text.size()) {
        NB_LOGE("hex string to value array failed, string:%{public}s", text.c_str() + end);
    }
    return bytes;
}

std::string ByteBuffer::ToHexString(const uint8_t *data, size_t length)
{
    std::string text(length * DIGITS_PER_BYTE, '\0');
    for (size_t i = 0; i < length; ++i) {
        text[i * DIGITS_PER_BYTE] = HEX_DIGITS[data[i] >> BITS_PER_DIGIT];
        text[i * DIGITS_PER_BYTE + 1] = HEX_DIGITS[data[i] & DIGIT_MASK];
    }
    return text;
}

std::string ByteBuffer::GetBufSha256() const
{
    if (bytes_.empty()) {
        return "";
    }
    uint8_t digest[SHA256_DIGEST_LENGTH] = {0};
    SHA256(bytes_.data(), bytes_.size(), digest);
    return ToHexString(digest, sizeof(digest));
}

std::string ByteBuffer::GetBufSha256Base64() const
{
    std::string digest = GetBufSha256();
    std::string text;
    Base64Encode(reinterpret_cast<const uint8_t *>(digest.data()), digest.size(), text);
    return text;
}
} // namespace Nubis
