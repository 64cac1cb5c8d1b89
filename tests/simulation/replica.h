// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SIMULATION_REPLICA_H
#define NUBIS_SIMULATION_REPLICA_H

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "nb_record.h"
#include "record_model.h"

namespace Simulation {

// What a follower has made of the pages of changes that it got. Any thread.
class Replica {
public:
    std::string Cursor();
    // Returns what cannot be, in words.
    std::string Apply(const std::vector<Nubis::NBRecord> &changes, const std::string &cursor);
    RecordModel::Contents Contents();

private:
    std::mutex mutex_;
    std::string cursor_;
    RecordModel::Contents contents_;
    std::map<std::string, uint64_t> versions_;
};

// The title of a record, which must fit the rest of it; what cannot be is added to the problems.
std::string TitleOf(const Nubis::NBRecord &record, std::string &problems);

} // namespace Simulation

#endif // NUBIS_SIMULATION_REPLICA_H
