// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "record_model.h"

#include <algorithm>
#include <set>

namespace Simulation {

size_t RecordModel::Order(const std::vector<Change> &changes, bool isWhole)
{
    std::lock_guard<std::mutex> lock(mutex_);
    const size_t first = entries_.size();
    ++now_;
    ++requests_;
    for (const Change &change : changes) {
        entries_.push_back({change, requests_, isWhole, now_, NEVER, Outcome::OPEN});
    }
    return first;
}

void RecordModel::Settle(size_t change, Outcome outcome)
{
    std::lock_guard<std::mutex> lock(mutex_);
    entries_[change].outcome = outcome;
    if (outcome == Outcome::DONE) {
        entries_[change].end = ++now_;
    }
}

void RecordModel::OnQuiet()
{
    std::lock_guard<std::mutex> lock(mutex_);
    ++now_;
    for (Entry &entry : entries_) {
        entry.end = std::min(entry.end, now_);
    }
}

// A title that is there tells that its request has happened, and so that its other changes have too.
void RecordModel::BelieveWholeRequests(const Contents &contents)
{
    std::set<size_t> happened;
    for (const Entry &entry : entries_) {
        const auto found = contents.find(entry.change.recordId);
        if (entry.isWhole && found != contents.end() && entry.change.title == found->second) {
            happened.insert(entry.request);
        }
    }
    for (Entry &entry : entries_) {
        if (happened.count(entry.request) > 0) {
            entry.outcome = Outcome::DONE;
        }
    }
}

// Whether every change that had ended by then has made room for a later one.
bool RecordModel::IsOverwritten(const std::string &recordId, uint64_t end) const
{
    return std::any_of(entries_.begin(), entries_.end(), [&](const Entry &entry) {
        return entry.change.recordId == recordId && entry.outcome == Outcome::DONE && entry.begin > end;
    });
}

bool RecordModel::CanBe(const std::string &recordId, const std::optional<std::string> &title) const
{
    if (!title.has_value() && !IsOverwritten(recordId, 0)) {
        return true;
    }
    return std::any_of(entries_.begin(), entries_.end(), [&](const Entry &entry) {
        return entry.change.recordId == recordId && entry.change.title == title && entry.outcome != Outcome::REFUSED &&
               !IsOverwritten(recordId, entry.end);
    });
}

std::string RecordModel::Explain(const Contents &contents)
{
    std::lock_guard<std::mutex> lock(mutex_);
    BelieveWholeRequests(contents);
    std::set<std::string> recordIds;
    for (const auto &[recordId, title] : contents) {
        recordIds.insert(recordId);
    }
    for (const Entry &entry : entries_) {
        recordIds.insert(entry.change.recordId);
    }
    std::string problems;
    for (const std::string &recordId : recordIds) {
        const auto found = contents.find(recordId);
        const auto title = found == contents.end() ? std::nullopt : std::make_optional(found->second);
        if (!CanBe(recordId, title)) {
            problems += "record " + recordId + " cannot be " + title.value_or("absent") + "\n";
        }
    }
    return problems;
}

} // namespace Simulation
