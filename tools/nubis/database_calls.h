// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DATABASE_CALLS_H
#define NUBIS_TOOL_DATABASE_CALLS_H

#include <future>
#include <memory>
#include <string>
#include <vector>

#include "nb_database.h"

namespace NubisTool {

// The asynchronous operations of a database as futures. A future whose callback is never called holds
// std::future_error; Wait turns that, and every refusal to start, into an error of the outcome.

struct SaveOutcome {
    std::shared_ptr<Nubis::NBResultMap> results = std::make_shared<Nubis::NBResultMap>();
    Nubis::NBError error;
};

struct ModifyOutcome {
    // What became of the records alone; that of the call is below.
    SaveOutcome saved;
    SaveOutcome deleted;
    Nubis::NBError error;
};

struct PageOutcome {
    std::vector<Nubis::NBRecord> records;
    std::string cursor;
    bool hasMore = false;
    Nubis::NBError error;
};

// The prepareTraceId names the user action to which a change belongs.
std::future<SaveOutcome> StartSave(Nubis::NBDatabase &database, std::vector<Nubis::NBRecord> records,
    Nubis::NBSavePolicy policy, const std::string &prepareTraceId = "");
std::future<SaveOutcome> StartDelete(Nubis::NBDatabase &database, std::vector<Nubis::NBRecord> records,
    Nubis::NBSavePolicy policy, const std::string &prepareTraceId = "");
std::future<ModifyOutcome> StartModify(Nubis::NBDatabase &database, std::vector<Nubis::NBRecord> saves,
    std::vector<Nubis::NBRecord> deletions, Nubis::NBSavePolicy policy, bool atomic);
std::future<SaveOutcome> StartCopy(Nubis::NBDatabase &database, std::vector<Nubis::NBCopyRecord> orders);
// The one result has the record's id.
std::future<SaveOutcome> StartShare(
    Nubis::NBDatabase &database, const std::string &recordType, const std::string &recordId);
// One record with its type and id; the result is kept under the id.
std::future<SaveOutcome> StartFetchById(Nubis::NBDatabase &database, const Nubis::NBRecord &record);
std::future<SaveOutcome> StartFetchByIds(Nubis::NBDatabase &database, std::vector<Nubis::NBRecord> records);
std::future<PageOutcome> StartQuery(Nubis::NBDatabase &database, const std::vector<std::string> &fields,
    Nubis::NBQuery query, int pageSize, const std::string &cursor);
std::future<PageOutcome> StartChanges(Nubis::NBDatabase &database, const std::string &recordType,
    const std::vector<std::string> &fields, int pageSize, const std::string &cursor);

// What became of one record of a call: its own result's error, else the call's; a record that the service did not answer
// for has an error, too.
Nubis::NBError ErrorFor(const SaveOutcome &outcome, const std::string &recordId);

template <typename Outcome>
Outcome Wait(std::future<Outcome> future)
{
    try {
        return future.get();
    } catch (const std::future_error &) {
        Outcome outcome;
        outcome.error.SetLocalError(Nubis::NB_LOCAL_IPC_FAILED);
        return outcome;
    }
}

} // namespace NubisTool

#endif
