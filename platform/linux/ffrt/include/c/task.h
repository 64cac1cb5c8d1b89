// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_C_TASK_H
#define FFRT_C_TASK_H

#include "c/type_def.h"

extern "C" {
// Gives one reference to the task back and returns how many there were before; 0 for a null handle. The task itself
// goes on running.
uint32_t ffrt_task_handle_dec_ref(ffrt_task_handle_t handle);

// As ffrt_task_handle_dec_ref, without the count.
void ffrt_task_handle_destroy(ffrt_task_handle_t handle);
}

#endif
