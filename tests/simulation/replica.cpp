// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "replica.h"

namespace Simulation {

std::string TitleOf(const Nubis::NBRecord &record, std::string &problems)
{
    Nubis::NBFieldMap fields;
    record.GetRecordData(fields);
    std::string title;
    int stars = 0;
    fields["title"].GetString(title);
    fields["stars"].GetInt(stars);
    if (title != "w" + std::to_string(stars)) {
        problems += "record " + record.GetRecordId() + " is mixed of " + title + " and " + std::to_string(stars) + "\n";
    }
    return title;
}

std::string Replica::Cursor()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return cursor_;
}

std::string Replica::Apply(const std::vector<Nubis::NBRecord> &changes, const std::string &cursor)
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::string problems;
    for (const Nubis::NBRecord &record : changes) {
        const std::string recordId = record.GetRecordId();
        uint64_t &version = versions_[recordId];
        if (record.GetVersion() <= version) {
            problems += "the changes of record " + recordId + " go from version " + std::to_string(version) + " to " +
                        std::to_string(record.GetVersion()) + "\n";
        }
        version = record.GetVersion();
        if (record.GetIsDelete()) {
            contents_.erase(recordId);
        } else {
            contents_[recordId] = TitleOf(record, problems);
        }
    }
    cursor_ = cursor;
    return problems;
}

RecordModel::Contents Replica::Contents()
{
    std::lock_guard<std::mutex> lock(mutex_);
    return contents_;
}

} // namespace Simulation
