// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_UTIL_ENCODING_H
#define NUBIS_SERVICE_UTIL_ENCODING_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace DriveService {

// Bytes travel as std::string; none of these functions keeps state, any thread may call them.

std::string HexEncode(std::string_view bytes);

// Standard alphabet with padding.
std::string Base64Encode(std::string_view bytes);

// Whether a text is Base64 of the standard alphabet with correct padding.
bool IsBase64(std::string_view text);

// URL-safe alphabet without padding.
std::string Base64UrlEncode(std::string_view bytes);
std::optional<std::string> Base64UrlDecode(std::string_view text);

// The 32 bytes of the digest.
std::string Sha256(std::string_view bytes);

// Bytes from the cryptographic generator; throws std::runtime_error when it has none.
std::string RandomBytes(size_t count);

// Most significant byte first, 8 bytes.
std::string BigEndian64(uint64_t value);
uint64_t ReadBigEndian64(std::string_view bytes);

bool IsUtf8(std::string_view text);
// With U+FFFD for every byte that belongs to no character.
std::string ToUtf8(std::string_view text);

} // namespace DriveService

#endif // NUBIS_SERVICE_UTIL_ENCODING_H
