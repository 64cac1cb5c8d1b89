// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_C_CONDITION_VARIABLE_H
#define FFRT_C_CONDITION_VARIABLE_H

// Nothing but the storage type ffrt_cond_t: use the class of cpp/condition_variable.h.
#include "c/type_def.h"

#endif
