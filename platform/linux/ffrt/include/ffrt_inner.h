// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_INNER_H
#define FFRT_INNER_H

#include "ffrt.h"
#include "cpp/future.h"
#include "cpp/thread.h"

#endif
