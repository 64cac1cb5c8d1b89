// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_LOCAL_STORE_H
#define NUBIS_TOOL_LOCAL_STORE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <json/json.h>

#include "nb_record.h"

namespace NubisTool {

// What a device knows of the records of a database, as a sync service would keep it: fields and version by record id.
class LocalStore {
public:
    struct Entry {
        std::string recordType;
        uint64_t version = 0;
        Json::Value fields;
    };

    // What taking in one record did.
    enum class Effect {
        ADDED,
        CHANGED,
        REMOVED,
        NOTHING // a version that was there already or is older, or a tombstone of a record that was not there
    };

    Effect Take(const Nubis::NBRecord &record);
    void Put(const std::string &recordId, Entry entry);
    void Remove(const std::string &recordId);
    const std::map<std::string, Entry> &Entries() const;

    // One record a line, by record id, members in order: equal contents are equal bytes.
    void Write(const std::string &path) const;
    // Throws CommandError when the file is none that Write made.
    static LocalStore Read(const std::string &path);

private:
    std::map<std::string, Entry> entries_;
};

struct StoreDifference {
    size_t records = 0; // compared
    size_t fields = 0;  // compared
    // A line for each difference: which record, which field, what either side has.
    std::vector<std::string> lines;
};

// Compares every record, version and field of two stores.
StoreDifference Compare(
    const LocalStore &first, const std::string &firstName, const LocalStore &second, const std::string &secondName);

} // namespace NubisTool

#endif
