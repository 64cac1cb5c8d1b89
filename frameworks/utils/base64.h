// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BASE64_H
#define NUBIS_BASE64_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Nubis {
// Standard Base64: one line, padded. Encoding nothing returns false and leaves the output as it was.
bool Base64Encode(const std::vector<uint8_t> &data, std::string &text);
bool Base64Encode(const uint8_t *data, size_t length, std::string &text);

// True when at least one byte came out; otherwise (also for empty text) the output is emptied.
bool Base64Decode(const std::string &text, std::vector<uint8_t> &data);

// URL-safe Base64 without padding. Both append to the output and always return true; decoding ends silently at the
// first character outside the alphabet and drops bits that fill no byte.
bool Base64UrlEncode(const std::vector<uint8_t> &data, std::string &text);
bool Base64UrlDecode(std::string_view text, std::vector<uint8_t> &data);
} // namespace Nubis

#endif // NUBIS_BASE64_H
