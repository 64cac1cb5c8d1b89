// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "base64.h"

#include <array>
#include <climits>
#include <memory>

#include <openssl/bio.h>
#include <openssl/buffer.h>
#include <openssl/evp.h>

namespace Nubis {
namespace {
struct BioDeleter {
    void operator()(BIO *bio) const
    {
        BIO_free_all(bio);
    }
};
using BioPtr = std::unique_ptr<BIO, BioDeleter>;

// The Base64 filter in front of the given end; the chain owns both. Null when either is missing.
BioPtr MakeBase64Chain(BIO *end)
{
    BioPtr endOwner(end);
    BioPtr filter(BIO_new(BIO_f_base64()));
    if (filter == nullptr || endOwner == nullptr) {
        return nullptr;
    }
    BIO_set_flags(filter.get(), BIO_FLAGS_BASE64_NO_NL);
    BIO_push(filter.get(), endOwner.release());
    return filter;
}

constexpr char URL_ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
constexpr uint32_t BITS_PER_BYTE = 8;
constexpr uint32_t BITS_PER_CHAR = 6;
constexpr uint32_t CHAR_MASK = 0x3F;
constexpr uint32_t BYTE_MASK = 0xFF;
constexpr size_t TABLE_SIZE = 256;

constexpr std::array<int8_t, TABLE_SIZE> MakeUrlDecodeTable()
{
    std::array<int8_t, TABLE_SIZE> table = {};
    for (size_t i = 0; i < TABLE_SIZE; ++i) {
        table[i] = -1;
    }
    for (size_t i = 0; i <= CHAR_MASK; ++i) {
        table[static_cast<uint8_t>(URL_ALPHABET[i])] = static_cast<int8_t>(i);
    }
    return table;
}
constexpr std::array<int8_t, TABLE_SIZE> URL_DECODE_TABLE = MakeUrlDecodeTable();
} // namespace

bool Base64Encode(const std::vector<uint8_t> &data, std::string &text)
{
    return Base64Encode(data.data(), data.size(), text);
}

bool Base64Encode(const uint8_t *data, size_t length, std::string &text)
{
    if (data == nullptr || length == 0 || length > INT_MAX) {
        return false;
    }
    BioPtr chain = MakeBase64Chain(BIO_new(BIO_s_mem()));
    if (chain == nullptr) {
        return false;
    }
    if (BIO_write(chain.get(), data, static_cast<int>(length)) <= 0 || BIO_flush(chain.get()) != 1) {
        return false;
    }
    BUF_MEM *sink = nullptr;
    BIO_get_mem_ptr(chain.get(), &sink);
    if (sink == nullptr || sink->data == nullptr || sink->length == 0) {
        return false;
    }
    text.assign(sink->data, sink->length);
    return true;
}

bool Base64Decode(const std::string &text, std::vector<uint8_t> &data)
{
    if (text.empty() || text.size() >= INT_MAX) {
        data.clear();
        return false;
    }
    BioPtr chain = MakeBase64Chain(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    if (chain == nullptr) {
        data.clear();
        return false;
    }
    data.resize(text.size() + 1);
    size_t produced = 0;
    while (produced < data.size()) {
        int count = BIO_read(chain.get(), data.data() + produced, static_cast<int>(data.size() - produced));
        if (count <= 0) {
            break;
        }
        produced += static_cast<size_t>(count);
    }
    data.resize(produced);
    return produced > 0;
}

bool Base64UrlEncode(const std::vector<uint8_t> &data, std::string &text)
{
    uint32_t held = 0;
    uint32_t bits = 0;
    text.reserve(text.size() + (data.size() * BITS_PER_BYTE + BITS_PER_CHAR - 1) / BITS_PER_CHAR);
    for (uint8_t byte : data) {
        held = (held << BITS_PER_BYTE) | byte;
        bits += BITS_PER_BYTE;
        while (bits >= BITS_PER_CHAR) {
            bits -= BITS_PER_CHAR;
            text += URL_ALPHABET[(held >> bits) & CHAR_MASK];
        }
    }
    if (bits > 0) {
        text += URL_ALPHABET[(held << (BITS_PER_CHAR - bits)) & CHAR_MASK];
    }
    return true;
}

bool Base64UrlDecode(std::string_view text, std::vector<uint8_t> &data)
{
    uint32_t held = 0;
    uint32_t bits = 0;
    data.reserve(data.size() + text.size() * BITS_PER_CHAR / BITS_PER_BYTE);
    for (char character : text) {
        int8_t value = URL_DECODE_TABLE[static_cast<uint8_t>(character)];
        if (value < 0) {
            break;
        }
        held = (held << BITS_PER_CHAR) | static_cast<uint32_t>(value);
        bits += BITS_PER_CHAR;
        if (bits >= BITS_PER_BYTE) {
            bits -= BITS_PER_BYTE;
            data.push_back(static_cast<uint8_t>((held >> bits) & BYTE_MASK));
        }
    }
    return true;
}
} // namespace Nubis
