// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SIMULATION_INSPECTION_H
#define NUBIS_SIMULATION_INSPECTION_H

#include <set>
#include <string>

namespace Nubis {
class NubisNative;
}

namespace Simulation {

// What the open file descriptors of this process lead to, each with its number.
std::set<std::string> OpenFiles();
// The threads of this process that are neither the calling one nor one that a pool keeps, by name.
std::multiset<std::string> BusyThreads();

bool IsConnected(Nubis::NubisNative &kit);
// What the kit still keeps of its requests, in words; empty when it is nothing. Only when none is under way.
std::string LeftOvers(Nubis::NubisNative &kit);

} // namespace Simulation

#endif // NUBIS_SIMULATION_INSPECTION_H
