// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_C_SLEEP_H
#define FFRT_C_SLEEP_H

#include "c/type_def.h"

extern "C" {
// Blocks the calling task or thread for `usec` microseconds; 0 only yields. Returns ffrt_success.
int ffrt_usleep(uint64_t usec);

// Lets other threads run first.
void ffrt_yield(void);
}

#endif
