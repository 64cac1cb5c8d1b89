// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_C_TYPE_DEF_H
#define FFRT_C_TYPE_DEF_H

#include <cstdint>

typedef int ffrt_qos_t;
typedef int ffrt_timer_t;
typedef void *ffrt_task_handle_t;
typedef void (*ffrt_timer_cb)(void *data);
typedef void (*ffrt_function_t)(void *);

typedef enum {
    ffrt_qos_inherit = -1,
    ffrt_qos_background = 0,
    ffrt_qos_utility = 1,
    ffrt_qos_default = 2,
    ffrt_qos_user_initiated = 3,
    ffrt_qos_deadline_request = 4,
    ffrt_qos_user_interactive = 5,
} ffrt_qos_default_t;

typedef enum {
    ffrt_error = -1,
    ffrt_success = 0,
    ffrt_error_nomem,
    ffrt_error_timedout,
    ffrt_error_busy,
    ffrt_error_inval,
} ffrt_error_t;

// Storage of the objects below; what is inside belongs to the implementation. Their address is their identity, so
// none of them may be copied or moved.
struct ffrt_task_attr_t {
    uint64_t storage[8];
};

struct ffrt_mutex_t {
    uint64_t storage[2];
};

struct ffrt_cond_t {
    uint64_t storage[1];
};

namespace ffrt {
using qos = int;

enum qos_default {
    qos_inherit = ffrt_qos_inherit,
    qos_background = ffrt_qos_background,
    qos_utility = ffrt_qos_utility,
    qos_default = ffrt_qos_default,
    qos_user_initiated = ffrt_qos_user_initiated,
    qos_deadline_request = ffrt_qos_deadline_request,
    qos_user_interactive = ffrt_qos_user_interactive,
};
} // namespace ffrt

#endif
