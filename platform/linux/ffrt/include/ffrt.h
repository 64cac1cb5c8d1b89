// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef FFRT_H
#define FFRT_H

#include "c/condition_variable.h"
#include "c/mutex.h"
#include "c/sleep.h"
#include "c/task.h"
#include "c/timer.h"
#include "c/type_def.h"
#include "cpp/condition_variable.h"
#include "cpp/mutex.h"
#include "cpp/sleep.h"
#include "cpp/task.h"

#endif
