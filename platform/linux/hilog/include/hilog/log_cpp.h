// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HILOG_LOG_CPP_H
#define HILOG_LOG_CPP_H

// C++ uses the same functions and macros as C.
#include "hilog/log_c.h"

#endif // HILOG_LOG_CPP_H
