// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_REGISTERED_ABILITIES_H
#define HOST_REGISTERED_ABILITIES_H

#include <cstdint>
#include <string>

#include "host/ability_registry.h"

namespace Host {

// The metadata of all abilities that this process offers for the bundle and user; false when it offers none.
bool FindRegisteredMetadata(const std::string &bundleName, int32_t userId, AbilityRegistry::Metadata &metadata);

} // namespace Host

#endif // HOST_REGISTERED_ABILITIES_H
