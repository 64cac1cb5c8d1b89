// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "securec.h"

namespace {

constexpr size_t MAX_SIZE = 0x7fffffff;

bool IsSize(size_t destMax)
{
    return destMax > 0 && destMax <= MAX_SIZE;
}

bool Overlap(const void *dest, const void *src, size_t size)
{
    auto first = reinterpret_cast<uintptr_t>(dest);
    auto second = reinterpret_cast<uintptr_t>(src);
    return first != second && (first < second ? second - first : first - second) < size;
}

// Room for at most `room` bytes, terminator included; the text's length, or a negative value on any failure. A text that
// was too long leaves its beginning behind.
int Format(char *dest, size_t room, const char *format, va_list args)
{
    int length = std::vsnprintf(dest, room, format, args);
    if (length < 0) {
        dest[0] = '\0';
        return -1;
    }
    return static_cast<size_t>(length) < room ? length : -1;
}

bool CheckFormatArguments(char *strDest, size_t destMax, const char *format)
{
    if (strDest == nullptr || !IsSize(destMax)) {
        return false;
    }
    if (format == nullptr) {
        strDest[0] = '\0';
        return false;
    }
    return true;
}

} // namespace

errno_t memcpy_s(void *dest, size_t destMax, const void *src, size_t count)
{
    if (!IsSize(destMax)) {
        return ERANGE;
    }
    if (dest == nullptr) {
        return EINVAL;
    }
    errno_t error = EOK;
    if (src == nullptr) {
        error = EINVAL_AND_RESET;
    } else if (count > destMax) {
        error = ERANGE_AND_RESET;
    } else if (Overlap(dest, src, count)) {
        error = EOVERLAP_AND_RESET;
    }
    if (error != EOK) {
        std::memset(dest, 0, destMax);
        return error;
    }
    if (dest != src) {
        std::memcpy(dest, src, count);
    }
    return EOK;
}

errno_t strcpy_s(char *strDest, size_t destMax, const char *strSrc)
{
    if (!IsSize(destMax)) {
        return ERANGE;
    }
    if (strDest == nullptr) {
        return EINVAL;
    }
    if (strSrc == nullptr) {
        strDest[0] = '\0';
        return EINVAL_AND_RESET;
    }
    size_t length = strnlen(strSrc, destMax);
    if (length == destMax) {
        strDest[0] = '\0';
        return ERANGE_AND_RESET;
    }
    if (Overlap(strDest, strSrc, length + 1)) {
        strDest[0] = '\0';
        return EOVERLAP_AND_RESET;
    }
    if (strDest != strSrc) {
        std::memcpy(strDest, strSrc, length + 1);
    }
    return EOK;
}

errno_t memset_s(void *dest, size_t destMax, int c, size_t count)
{
    if (!IsSize(destMax)) {
        return ERANGE;
    }
    if (dest == nullptr) {
        return EINVAL;
    }
    if (count > destMax) {
        std::memset(dest, c, destMax);
        return ERANGE_AND_RESET;
    }
    std::memset(dest, c, count);
    return EOK;
}

int sprintf_s(char *strDest, size_t destMax, const char *format, ...)
{
    if (!CheckFormatArguments(strDest, destMax, format)) {
        return -1;
    }
    va_list args;
    va_start(args, format);
    int length = Format(strDest, destMax, format, args);
    va_end(args);
    if (length < 0) {
        strDest[0] = '\0';
    }
    return length;
}

int snprintf_s(char *strDest, size_t destMax, size_t count, const char *format, ...)
{
    if (!CheckFormatArguments(strDest, destMax, format)) {
        return -1;
    }
    va_list args;
    va_start(args, format);
    int length = Format(strDest, count < destMax ? count + 1 : destMax, format, args);
    va_end(args);
    if (length < 0 && count >= destMax) {
        strDest[0] = '\0';
    }
    return length;
}
