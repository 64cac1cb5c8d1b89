// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "core.h"

namespace Host::Ffrt {
Core &GetCore()
{
    static Core *core = new Core;
    return *core;
}
} // namespace Host::Ffrt
