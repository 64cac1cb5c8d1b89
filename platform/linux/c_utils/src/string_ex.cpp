// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstddef>
#include <cstdint>
#include <string>

#include "string_ex.h"

namespace OHOS {
namespace {

constexpr uint32_t SURROGATE_FIRST = 0xD800;
constexpr uint32_t LOW_SURROGATE_FIRST = 0xDC00;
constexpr uint32_t SURROGATE_LAST = 0xDFFF;
constexpr uint32_t SUPPLEMENTARY_FIRST = 0x10000;
constexpr uint32_t CODE_POINT_LAST = 0x10FFFF;
constexpr uint32_t SURROGATE_BITS = 10;
constexpr uint32_t SURROGATE_MASK = 0x3FF;
constexpr uint32_t TAIL_BITS = 6;
constexpr uint32_t TAIL_MASK = 0x3F;

bool IsSurrogate(uint32_t unit)
{
    return unit >= SURROGATE_FIRST && unit <= SURROGATE_LAST;
}

void AppendUtf8(std::string &out, uint32_t point)
{
    if (point < 0x80) {
        out.push_back(static_cast<char>(point));
        return;
    }
    uint32_t tails = point < 0x800 ? 1 : (point < SUPPLEMENTARY_FIRST ? 2 : 3);
    static constexpr uint32_t LEADS[] = {0, 0xC0, 0xE0, 0xF0};
    out.push_back(static_cast<char>(LEADS[tails] | (point >> (tails * TAIL_BITS))));
    while (tails-- > 0) {
        out.push_back(static_cast<char>(0x80 | ((point >> (tails * TAIL_BITS)) & TAIL_MASK)));
    }
}

void AppendUtf16(std::u16string &out, uint32_t point)
{
    if (point < SUPPLEMENTARY_FIRST) {
        out.push_back(static_cast<char16_t>(point));
        return;
    }
    uint32_t rest = point - SUPPLEMENTARY_FIRST;
    out.push_back(static_cast<char16_t>(SURROGATE_FIRST | (rest >> SURROGATE_BITS)));
    out.push_back(static_cast<char16_t>(LOW_SURROGATE_FIRST | (rest & SURROGATE_MASK)));
}

// Reads the code point at `pos` and moves `pos` behind it; false when the bytes there are not UTF-8.
bool NextCodePoint(const std::string &text, size_t &pos, uint32_t &point)
{
    auto lead = static_cast<uint8_t>(text[pos++]);
    if (lead < 0x80) {
        point = lead;
        return true;
    }
    uint32_t tails = 0;
    uint32_t smallest = 0;
    if ((lead & 0xE0) == 0xC0) {
        tails = 1;
        smallest = 0x80;
        point = lead & 0x1F;
    } else if ((lead & 0xF0) == 0xE0) {
        tails = 2;
        smallest = 0x800;
        point = lead & 0x0F;
    } else if ((lead & 0xF8) == 0xF0) {
        tails = 3;
        smallest = SUPPLEMENTARY_FIRST;
        point = lead & 0x07;
    } else {
        return false;
    }
    for (; tails > 0; --tails) {
        if (pos == text.size() || (static_cast<uint8_t>(text[pos]) & 0xC0) != 0x80) {
            return false;
        }
        point = (point << TAIL_BITS) | (static_cast<uint8_t>(text[pos++]) & TAIL_MASK);
    }
    return point >= smallest && point <= CODE_POINT_LAST && !IsSurrogate(point);
}

} // namespace

std::string Str16ToStr8(const std::u16string &str16)
{
    std::string out;
    out.reserve(str16.size());
    for (size_t i = 0; i < str16.size(); ++i) {
        uint32_t point = str16[i];
        if (IsSurrogate(point)) {
            if (point >= LOW_SURROGATE_FIRST || i + 1 == str16.size()) {
                return {};
            }
            uint32_t low = str16[++i];
            if (low < LOW_SURROGATE_FIRST || low > SURROGATE_LAST) {
                return {};
            }
            point = SUPPLEMENTARY_FIRST + ((point & SURROGATE_MASK) << SURROGATE_BITS) + (low & SURROGATE_MASK);
        }
        AppendUtf8(out, point);
    }
    return out;
}

std::u16string Str8ToStr16(const std::string &str)
{
    std::u16string out;
    out.reserve(str.size());
    for (size_t pos = 0; pos < str.size();) {
        uint32_t point = 0;
        if (!NextCodePoint(str, pos, point)) {
            return {};
        }
        AppendUtf16(out, point);
    }
    return out;
}

} // namespace OHOS
