// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NOTES_SYNC_NOTE_SYNC_H
#define NOTES_SYNC_NOTE_SYNC_H

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "note.h"
#include "note_store.h"
#include "nubis_async.h"

// Keeps a store in step with the cloud. Whatever fails in between, a process that is killed or a reply that is lost, the
// next run goes on from what the store holds.
class NoteSync {
public:
    // Tells what happens, for people.
    using Teller = std::function<void(const std::string &line)>;

    // A request carries as many notes as the batch size says; both references stay the caller's.
    NoteSync(NoteStore &store, std::shared_ptr<Nubis::NBDatabase> database, size_t batchSize, Teller tell);

    // Until the cloud has what the user has changed and the store has what others have. Throws std::system_error, or
    // std::runtime_error when others change the same notes again and again.
    void Run();

private:
    void Push();
    void Send(const std::vector<Note> &notes);
    void TakeResult(const Note &sent, const Nubis::NBRecordOperResult &result);
    void Pull();
    void Take(const Nubis::NBRecord &record);
    void TakeTombstone(Note local);

    NoteStore &store_;
    const std::shared_ptr<Nubis::NBDatabase> database_;
    const size_t batchSize_;
    const Teller tell_;
};

// The notes of the cloud itself, by id. Throws std::system_error.
std::map<std::string, Content> ReadCloud(const std::shared_ptr<Nubis::NBDatabase> &database);

#endif // NOTES_SYNC_NOTE_SYNC_H
