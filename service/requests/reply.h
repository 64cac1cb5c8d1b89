// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_REQUESTS_REPLY_H
#define NUBIS_SERVICE_REQUESTS_REPLY_H

#include <string>
#include <utility>
#include <vector>

#include <json/json.h>

#include "util/json_writer.h"

namespace DriveService {

// The answer to a request: an object whose lists of records are written already. Used by one thread.
class Reply {
public:
    // Most answers have no such list.
    Reply(Json::Value members) : members_(std::move(members))
    {}

    Json::Value &operator[](const char *name)
    {
        return members_[name];
    }

    // `name` must be a literal, and no other member's.
    void Add(const char *name, JsonList &&list)
    {
        lists_.emplace_back(name, list.Take());
    }

    std::string Write() const
    {
        std::vector<WrittenMember> lists;
        for (const auto &[name, text] : lists_) {
            lists.push_back({name, text});
        }
        return WriteJson(members_, lists);
    }

private:
    Json::Value members_;
    std::vector<std::pair<const char *, std::string>> lists_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_REQUESTS_REPLY_H
