// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "journal.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace Crash {
void Journal::Read(const std::string &line)
{
    std::istringstream words(line);
    std::string what;
    std::string name;
    words >> what >> name;
    Thread &thread = threads_[name];
    if (what == "begin") {
        thread.underWay.clear();
        for (std::string change; words >> change;) {
            const size_t middle = change.find('=');
            const std::string title = change.substr(middle + 1);
            thread.underWay[change.substr(0, middle)] = title.empty() ? std::nullopt : std::make_optional(title);
        }
    } else if (what == "done") {
        ++acknowledged_;
        for (const auto &[id, title] : thread.underWay) {
            thread.sure[id] = title;
        }
        thread.underWay.clear();
    } else if (what == "refused") {
        for (const auto &[id, title] : thread.underWay) {
            thread.sure.emplace(id, std::nullopt);
        }
        thread.underWay.clear();
    } else if (what == "subscribed") {
        words >> name;
        subscriptions_.insert(name);
    } else if (what != "lost") {
        throw std::runtime_error(line);
    }
}

std::string Journal::Check(const Titles &contents) const
{
    std::ostringstream problems;
    size_t explained = 0;
    for (const auto &[name, thread] : threads_) {
        const auto holds = [&](const Changes &changes) {
            return std::all_of(changes.begin(), changes.end(), [&](const auto &change) {
                const auto found = contents.find(change.first);
                return found == contents.end() ? !change.second.has_value() : found->second == change.second;
            });
        };
        Changes all = thread.sure;
        for (const auto &[id, title] : thread.underWay) {
            all[id] = title;
        }
        Changes before = thread.sure;
        for (const auto &[id, title] : thread.underWay) {
            before.emplace(id, std::nullopt);
        }
        if (!holds(before) && !holds(all)) {
            problems << name << " is left with what it has not done:\n";
            for (const auto &[id, title] : all) {
                const auto found = contents.find(id);
                problems << "  " << id << ": acknowledged " << before[id].value_or("none") << ", last asked for "
                         << title.value_or("none") << ", is " << (found == contents.end() ? "none" : found->second)
                         << "\n";
            }
        }
        for (const auto &[id, title] : all) {
            explained += contents.count(id);
        }
    }
    if (explained != contents.size()) {
        problems << contents.size() - explained << " records that nobody has saved\n";
    }
    return problems.str();
}

size_t Journal::Lost() const
{
    return static_cast<size_t>(std::count_if(
        threads_.begin(), threads_.end(), [](const auto &entry) { return !entry.second.underWay.empty(); }));
}
} // namespace Crash
