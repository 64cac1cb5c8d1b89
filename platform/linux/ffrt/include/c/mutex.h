// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_C_MUTEX_H
#define FFRT_C_MUTEX_H

// Nothing but the storage type ffrt_mutex_t: use the classes of cpp/mutex.h.
#include "c/type_def.h"

#endif
