// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_RECORDS_RECORD_SAVER_H
#define NUBIS_SERVICE_RECORDS_RECORD_SAVER_H

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/catalogue_types.h"
#include "records/incoming_record.h"
#include "store/store.h"

namespace DriveService {

enum class SavePolicy {
    IF_UNCHANGED = 0,   // changes the fields sent, if the record still has the version the change is based on
    CHANGED_FIELDS = 1, // changes the fields sent, whatever the record has become
    OVERWRITE = 2,      // what is sent is the whole record
};

// What became of one record of a request.
struct RecordOutcome {
    std::string recordId;
    std::string localRecordId; // as the client sent it
    std::string recordType;
    std::optional<Failure> failure;
    std::optional<StoredRecord> record; // as it is now; with a failure: the record that is in the way
};

struct SaveContext {
    const AppEntry &app;
    const ContainerEntry &container;
    int64_t databaseId = 0;
    SavePolicy policy = SavePolicy::IF_UNCHANGED;
    ChangeStamp stamp;                         // of this change
    std::string ownerId;                       // of records that name no owner
    std::function<std::string()> makeRecordId; // for records that come without one
};

// Saves the records of one request within a write session, each or not each on its own: one that is refused leaves the
// others be. References may point to records of the same request, also to later ones, so it is first settled which
// records can be saved and then they are written. Used once, by one thread.
class RecordSaver {
public:
    RecordSaver(WriteSession &session, SaveContext context);

    // In the order of the records, an array.
    std::vector<RecordOutcome> Save(Json::Value &&records);

private:
    // A record on its way: what was sent and what it would become.
    struct Candidate {
        IncomingRecord incoming;
        RecordOutcome *outcome = nullptr;
        bool creates = false;
        StoredRecord next;
        Json::Value data;
        std::vector<IndexRow> dupCheckKey; // empty when the duplicate check does not apply
    };
    using Round = std::map<std::string, Candidate *>;

    void Prepare(Candidate &candidate);
    std::optional<Failure> Judge(Candidate &candidate, const std::optional<StoredRecord> &existing);
    std::optional<Failure> Merge(Candidate &candidate, const std::optional<StoredRecord> &existing);
    void FillNext(Candidate &candidate, const std::optional<StoredRecord> &existing);
    void Settle(std::vector<Candidate *> &candidates);
    bool RefuseDuplicates(const std::vector<Candidate *> &candidates, const Round &round);
    std::string StoredDuplicateOf(const Candidate &candidate, const Round &round);
    std::optional<Failure> FindDangling(const Candidate &candidate, const Round &round);
    bool RefuseDangling(const std::vector<Candidate *> &candidates, const Round &round);
    bool IsThere(const RecordReference &reference, const Round &round);
    void Write(Candidate &candidate);

    WriteSession &session_;
    SaveContext context_;
    std::map<std::string, std::vector<IndexedField>> indexedFields_; // by record type, of those met so far
    std::map<std::string, std::string> storedTypes_; // of the round's targets, by id; empty: no live record
};

} // namespace DriveService

#endif // NUBIS_SERVICE_RECORDS_RECORD_SAVER_H
