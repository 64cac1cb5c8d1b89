// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_LOG_H
#define NUBIS_LOG_H

#include "hilog/log.h"

namespace Nubis {
// The name of a source file without the folders that __FILE__ may carry.
constexpr const char *SourceFileName(const char *path)
{
    const char *name = path;
    for (const char *at = path; *at != '\0'; ++at) {
        if (*at == '/') {
            name = at + 1;
        }
    }
    return name;
}
} // namespace Nubis

// Domain and tag are given with each call: LOG_DOMAIN and LOG_TAG belong to whichever header set them first.
#define NB_LOG_PREFIX "{%{public}s:%{public}d %{public}s()} "
#define NB_LOG_PLAIN(level, fmt)                                                                                       \
    static_cast<void>(HILOG_IMPL(LOG_CORE, level, 0xD004315, "Nubis", NB_LOG_PREFIX fmt,                               \
        ::Nubis::SourceFileName(__FILE__), __LINE__, __FUNCTION__))
#define NB_LOG_FORMAT(level, fmt, ...)                                                                                 \
    static_cast<void>(HILOG_IMPL(LOG_CORE, level, 0xD004315, "Nubis", NB_LOG_PREFIX fmt,                               \
        ::Nubis::SourceFileName(__FILE__), __LINE__, __FUNCTION__, __VA_ARGS__))
// C++17 knows no macro whose variable part may be empty, so texts with and without arguments are told apart here.
#define NB_LOG_PICK(a1, a2, a3, a4, a5, a6, a7, a8, a9, picked, ...) picked
#define NB_LOG_IMPL(level, ...)                                                                                        \
    NB_LOG_PICK(__VA_ARGS__, NB_LOG_FORMAT, NB_LOG_FORMAT, NB_LOG_FORMAT, NB_LOG_FORMAT, NB_LOG_FORMAT, NB_LOG_FORMAT, \
        NB_LOG_FORMAT, NB_LOG_FORMAT, NB_LOG_PLAIN, 0)                                                                 \
    (level, __VA_ARGS__)

// A text in the platform's form (%{public}s and the like) and up to eight arguments.
#define NB_LOGD(...) NB_LOG_IMPL(LOG_DEBUG, __VA_ARGS__)
#define NB_LOGI(...) NB_LOG_IMPL(LOG_INFO, __VA_ARGS__)
#define NB_LOGE(...) NB_LOG_IMPL(LOG_ERROR, __VA_ARGS__)

#endif // NUBIS_LOG_H
