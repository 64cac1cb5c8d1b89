// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include <openssl/evp.h>
#include <openssl/rand.h>

namespace DriveService {

namespace {

constexpr std::string_view STANDARD = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view URL_SAFE = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
constexpr unsigned BITS_PER_BYTE = 8;
constexpr unsigned BITS_PER_DIGIT = 6;
constexpr unsigned DIGIT_MASK = 0x3F;

unsigned char Byte(char c)
{
    return static_cast<unsigned char>(c);
}

std::string Encode(std::string_view bytes, std::string_view alphabet)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    uint32_t bits = 0;
    unsigned held = 0;
    for (char c : bytes) {
        bits = (bits << BITS_PER_BYTE) | Byte(c);
        held += BITS_PER_BYTE;
        while (held >= BITS_PER_DIGIT) {
            held -= BITS_PER_DIGIT;
            text += alphabet[(bits >> held) & DIGIT_MASK];
        }
    }
    if (held > 0) {
        text += alphabet[(bits << (BITS_PER_DIGIT - held)) & DIGIT_MASK];
    }
    return text;
}

// How many bytes follow the first of a UTF-8 sequence, and the least code point that may be written that long.
struct Utf8Lead {
    unsigned following;
    uint32_t bits;
    uint32_t least;
};

std::optional<Utf8Lead> ReadLead(unsigned char lead)
{
    if (lead < 0x80) {
        return Utf8Lead{0, lead, 0};
    }
    if ((lead & 0xE0) == 0xC0) {
        return Utf8Lead{1, lead & 0x1Fu, 0x80};
    }
    if ((lead & 0xF0) == 0xE0) {
        return Utf8Lead{2, lead & 0x0Fu, 0x800};
    }
    if ((lead & 0xF8) == 0xF0) {
        return Utf8Lead{3, lead & 0x07u, 0x10000};
    }
    return std::nullopt;
}

} // namespace

std::string HexEncode(std::string_view bytes)
{
    static constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (char c : bytes) {
        text += DIGITS[Byte(c) >> 4];
        text += DIGITS[Byte(c) & 0xF];
    }
    return text;
}

std::string Base64Encode(std::string_view bytes)
{
    std::string text = Encode(bytes, STANDARD);
    text.append((4 - text.size() % 4) % 4, '=');
    return text;
}

bool IsBase64(std::string_view text)
{
    if (text.size() % 4 != 0) {
        return false;
    }
    size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') {
        ++padding;
    }
    text.remove_suffix(padding);
    return std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
    });
}

std::string Base64UrlEncode(std::string_view bytes)
{
    return Encode(bytes, URL_SAFE);
}

std::optional<std::string> Base64UrlDecode(std::string_view text)
{
    std::string bytes;
    uint32_t bits = 0;
    unsigned held = 0;
    for (char c : text) {
        size_t digit = URL_SAFE.find(c);
        if (digit == std::string_view::npos) {
            return std::nullopt;
        }
        bits = (bits << BITS_PER_DIGIT) | static_cast<uint32_t>(digit);
        held += BITS_PER_DIGIT;
        if (held >= BITS_PER_BYTE) {
            held -= BITS_PER_BYTE;
            bytes += static_cast<char>((bits >> held) & 0xFF);
        }
    }
    return bytes;
}

std::string Sha256(std::string_view bytes)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1) {
        throw std::runtime_error("the SHA-256 digest could not be computed");
    }
    return std::string(reinterpret_cast<const char *>(digest.data()), length);
}

std::string RandomBytes(size_t count)
{
    std::string bytes(count, '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char *>(bytes.data()), static_cast<int>(count)) != 1) {
        throw std::runtime_error("the random generator failed");
    }
    return bytes;
}

std::string BigEndian64(uint64_t value)
{
    std::string bytes(sizeof(value), '\0');
    for (size_t i = 0; i < sizeof(value); ++i) {
        bytes[i] = static_cast<char>(value >> (BITS_PER_BYTE * (sizeof(value) - 1 - i)));
    }
    return bytes;
}

uint64_t ReadBigEndian64(std::string_view bytes)
{
    uint64_t value = 0;
    for (char c : bytes.substr(0, sizeof(value))) {
        value = (value << BITS_PER_BYTE) | Byte(c);
    }
    return value;
}

namespace {
// The bytes of the character that the text begins with; 0 when it begins with none. The text is not empty.
size_t CharacterBytes(std::string_view text)
{
    if (Byte(text[0]) < 0x80) {
        return 1;
    }
    std::optional<Utf8Lead> lead = ReadLead(Byte(text[0]));
    if (!lead || text.size() <= lead->following) {
        return 0;
    }
    uint32_t point = lead->bits;
    for (unsigned k = 1; k <= lead->following; ++k) {
        unsigned char next = Byte(text[k]);
        if ((next & 0xC0) != 0x80) {
            return 0;
        }
        point = (point << BITS_PER_DIGIT) | (next & DIGIT_MASK);
    }
    bool surrogate = point >= 0xD800 && point <= 0xDFFF;
    return point < lead->least || point > 0x10FFFF || surrogate ? 0 : lead->following + 1;
}
} // namespace

bool IsUtf8(std::string_view text)
{
    constexpr uint64_t notAscii = 0x8080808080808080;
    while (!text.empty()) {
        // Most texts are ASCII, which is told of eight bytes at once.
        uint64_t eight = notAscii;
        std::memcpy(&eight, text.data(), text.size() < sizeof(eight) ? 0 : sizeof(eight));
        if ((eight & notAscii) == 0) {
            text.remove_prefix(sizeof(eight));
            continue;
        }
        const size_t bytes = CharacterBytes(text);
        if (bytes == 0) {
            return false;
        }
        text.remove_prefix(bytes);
    }
    return true;
}

std::string ToUtf8(std::string_view text)
{
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string made;
    made.reserve(text.size());
    while (!text.empty()) {
        const size_t bytes = CharacterBytes(text);
        made += bytes == 0 ? replacement : text.substr(0, bytes);
        text.remove_prefix(bytes == 0 ? 1 : bytes);
    }
    return made;
}

} // namespace DriveService
