// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BYTE_BUFFER_H
#define NUBIS_BYTE_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Nubis {
// Bytes that are put together and then read, digested or copied out. A plain value.
class ByteBuffer {
public:
    // Appends the bytes written in the text, two characters each. A single character at the end is ignored; at the
    // first pair that is not hexadecimal reading ends with a log line and keeps what was read.
    void FromHexString(std::string text);
    // Appends the bytes.
    void FromByteArray(const uint8_t *data, size_t length);
    // Copies all bytes to data; false when capacity is too small for them.
    bool GetByteArray(uint8_t *data, size_t capacity) const;
    size_t GetSize() const;

    // The bytes written in the text, by the rules of FromHexString.
    static std::vector<uint8_t> HexStringToValueArray(const std::string &text);
    // The bytes as lower-case hexadecimal text.
    static std::string ToHexString(const uint8_t *data, size_t length);

    // The SHA-256 digest of the bytes as 64 lower-case hexadecimal characters; empty when there are no bytes.
    std::string GetBufSha256() const;
    // The Base64 form of the text that GetBufSha256 yields (not of the digest's bytes).
    std::string GetBufSha256Base64() const;

private:
    std::vector<uint8_t> bytes_;
};
} // namespace Nubis

#endif // NUBIS_BYTE_BUFFER_H
