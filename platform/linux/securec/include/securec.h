// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef SECUREC_H
#define SECUREC_H

#include <stdarg.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#ifndef EOK
#define EOK 0
#endif
#ifndef EINVAL
#define EINVAL 22
#endif
#ifndef ERANGE
#define ERANGE 34
#endif
#ifndef EINVAL_AND_RESET
#define EINVAL_AND_RESET 150
#endif
#ifndef ERANGE_AND_RESET
#define ERANGE_AND_RESET 162
#endif
#ifndef EOVERLAP_AND_RESET
#define EOVERLAP_AND_RESET 182
#endif

typedef int errno_t;

// Sizes are in bytes and include the terminator of strings. A size of 0 or above 0x7fffffff gives ERANGE and a null
// destination EINVAL, both touching nothing. The other errors empty the destination and end in _AND_RESET: EINVAL_AND_RESET
// for a null source, ERANGE_AND_RESET when it does not fit, EOVERLAP_AND_RESET when source and destination overlap (being
// the same address is no overlap). Any thread.

// Errors set all destMax bytes to zero.
errno_t memcpy_s(void *dest, size_t destMax, const void *src, size_t count);
// Errors set the first character to zero.
errno_t strcpy_s(char *strDest, size_t destMax, const char *strSrc);
// A count above destMax sets destMax bytes and gives ERANGE_AND_RESET.
errno_t memset_s(void *dest, size_t destMax, int c, size_t count);

// Both give the number of characters written without the terminator. A text that does not fit, or a null pointer, gives -1
// and an empty string; nothing is touched when destMax is out of range. snprintf_s writes at most `count` characters: when
// count is below destMax, a longer text gives -1, but its first `count` characters stay.
int sprintf_s(char *strDest, size_t destMax, const char *format, ...) __attribute__((__format__(printf, 3, 4)));
int snprintf_s(char *strDest, size_t destMax, size_t count, const char *format, ...)
    __attribute__((__format__(printf, 4, 5)));

#ifdef __cplusplus
}
#endif

#endif // SECUREC_H
