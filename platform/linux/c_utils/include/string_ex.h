// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_STRING_EX_H
#define OHOS_STRING_EX_H

#include <string>

namespace OHOS {

// Both may be called from any thread. Invalid input (unpaired surrogates, malformed or overlong sequences, values beyond
// U+10FFFF) gives an empty string. An embedded U+0000 is a character like any other.
std::string Str16ToStr8(const std::u16string &str16);
std::u16string Str8ToStr16(const std::string &str);

} // namespace OHOS

#endif // OHOS_STRING_EX_H
