// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "note_sync.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "nubis_error_code.h"

using namespace Nubis;

namespace {
constexpr char RECORD_TYPE[] = "note";
constexpr int PAGE_SIZE = 100;
constexpr int MAX_ROUNDS = 10;

// Of the local service; others may have codes of their own.
enum ServiceError {
    INVALID_CURSOR = 1008,
    RECORD_NOT_FOUND = 1103,
    RECORD_DELETED = 1104,
    RECORD_EXISTS = 1105,
    VERSION_CONFLICT = 1106,
};

void ThrowIfError(const NBError &error, const std::string &what)
{
    if (error.HasError()) {
        throw std::system_error(ToErrorCode(error), what + ": " + error.GetErrorMsg());
    }
}

bool IsGone(const NBError &error)
{
    return error.GetServerErrorCode() == RECORD_NOT_FOUND || error.GetServerErrorCode() == RECORD_DELETED;
}

// Somebody else has changed the record since this device last saw it.
bool IsConflict(const NBError &error)
{
    return IsGone(error) || error.GetServerErrorCode() == RECORD_EXISTS ||
           error.GetServerErrorCode() == VERSION_CONFLICT;
}

NBRecord ToRecord(const Note &note)
{
    NBRecord record;
    record.SetRecordType(RECORD_TYPE);
    record.SetRecordId(note.id);
    record.SetVersion(note.version);
    record.SetNewCreate(note.version == 0);
    record.SetRecordData({
        {"title", NBRecordField(note.content.title)},
        {"body", NBRecordField(note.content.body)},
        {"stars", NBRecordField(note.content.stars)},
    });
    return record;
}

Content ToContent(const NBRecord &record)
{
    NBFieldMap fields;
    record.GetRecordData(fields);
    Content content;
    // What is not there keeps the value that an empty note has.
    fields["title"].GetString(content.title);
    fields["body"].GetString(content.body);
    fields["stars"].GetLong(content.stars);
    return content;
}

template <typename T>
const T &MergeField(const T &base, const T &local, const T &remote)
{
    return remote == base ? local : remote;
}

// Field by field, so that two devices that change different parts of a note both get what they wanted. Where both have
// changed the same field, what reached the cloud first stays. Times would not be better judges: the clocks of devices
// differ, and the order in which the cloud took the changes is the same for all.
Content Merge(const Note &local, const Content &remote)
{
    return {MergeField(local.base.title, local.content.title, remote.title),
        MergeField(local.base.body, local.content.body, remote.body),
        MergeField(local.base.stars, local.content.stars, remote.stars)};
}
} // namespace

NoteSync::NoteSync(NoteStore &store, std::shared_ptr<NBDatabase> database, size_t batchSize, Teller tell)
    : store_(store), database_(std::move(database)), batchSize_(std::max<size_t>(batchSize, 1)), tell_(std::move(tell))
{}

void NoteSync::Run()
{
    // A push that meets a conflict leaves the note dirty; the pull merges, and the next round pushes the outcome.
    for (int round = 0; round < MAX_ROUNDS; ++round) {
        Push();
        Pull();
        if (store_.DirtyNotes().empty()) {
            return;
        }
    }
    throw std::runtime_error("others change the same notes faster than this device can merge");
}

void NoteSync::Push()
{
    const std::vector<Note> dirty = store_.DirtyNotes();
    for (size_t from = 0; from < dirty.size(); from += batchSize_) {
        const size_t to = std::min(from + batchSize_, dirty.size());
        Send({dirty.begin() + static_cast<std::ptrdiff_t>(from), dirty.begin() + static_cast<std::ptrdiff_t>(to)});
    }
}

void NoteSync::Send(const std::vector<Note> &notes)
{
    std::vector<NBRecord> saves;
    std::vector<NBRecord> deletions;
    for (const Note &note : notes) {
        (note.isDeleted ? deletions : saves).push_back(ToRecord(note));
    }
    // Not atomic: a conflict of one note is no reason to hold the others back.
    Async::ModifyResult reply =
        Async::ModifyRecords(database_, std::move(saves), std::move(deletions), NB_SAVE_IF_UNCHANGED, false)
            .Start()
            .get();
    ThrowIfError(reply.error, "pushing notes");
    store_.InTransaction([&] {
        for (const Note &note : notes) {
            TakeResult(note, (note.isDeleted ? reply.deleted : reply.saved)[note.id]);
        }
    });
}

void NoteSync::TakeResult(const Note &sent, const NBRecordOperResult &result)
{
    const bool isDone = !result.HasError() || (sent.isDeleted && IsGone(result));
    if (!isDone && IsConflict(result)) {
        tell_("\"" + sent.content.title + "\" was changed elsewhere, too");
        return;
    }
    if (!isDone) {
        ThrowIfError(result, "pushing \"" + sent.content.title + "\"");
    }
    if (sent.isDeleted) {
        store_.Erase(sent.id);
        tell_("deletes \"" + sent.content.title + "\" in the cloud");
        return;
    }
    Note note = sent;
    note.base = sent.content;
    note.version = result.GetRecord().GetVersion();
    note.isDirty = false;
    store_.Put(note);
    tell_("pushes \"" + note.content.title + "\"");
}

void NoteSync::Pull()
{
    bool hasMore = true;
    while (hasMore) {
        const std::string cursor = store_.Cursor();
        const Async::ChangesResult page =
            Async::FetchDatabaseChanges(database_, RECORD_TYPE, {}, PAGE_SIZE, cursor).Start().get();
        if (page.error.GetServerErrorCode() == INVALID_CURSOR && !cursor.empty()) {
            // The cloud has another history than before, as after a backup was put back.
            tell_("begins anew, because the cloud does not know its cursor");
            store_.ForgetCloud();
            continue;
        }
        ThrowIfError(page.error, "pulling changes");
        // The changes and the cursor behind them belong together: a device that dies has both or none.
        store_.InTransaction([&] {
            for (const NBRecord &record : page.records) {
                Take(record);
            }
            store_.SetCursor(page.cursor);
        });
        hasMore = page.hasMore;
    }
}

void NoteSync::Take(const NBRecord &record)
{
    const std::optional<Note> known = store_.Find(record.GetRecordId());
    if (known && known->version >= record.GetVersion()) {
        return; // what this device has pushed itself comes back with the changes
    }
    if (record.GetIsDelete()) {
        if (known) {
            TakeTombstone(*known);
        }
        return;
    }
    Note note = known.value_or(Note());
    const Content remote = ToContent(record);
    // The user has deleted what somebody else has gone on writing: it comes back, because writing is not done again as
    // easily as deleting.
    note.content = known && known->isDirty && !known->isDeleted ? Merge(*known, remote) : remote;
    note.id = record.GetRecordId();
    note.base = remote;
    note.version = record.GetVersion();
    note.isDeleted = false;
    note.isDirty = note.content != remote;
    store_.Put(note);
    tell_((note.isDirty ? "merges \"" : "takes \"") + note.content.title + "\"");
}

void NoteSync::TakeTombstone(Note local)
{
    if (!local.isDirty || local.isDeleted) {
        store_.Erase(local.id);
        tell_("removes \"" + local.content.title + "\"");
        return;
    }
    // The same the other way round: the user's edit brings it to life again, as a new record of the old id.
    local.version = 0;
    store_.Put(local);
    tell_("keeps \"" + local.content.title + "\", which was deleted elsewhere");
}

std::map<std::string, Content> ReadCloud(const std::shared_ptr<NBDatabase> &database)
{
    std::map<std::string, Content> contents;
    Async::QueryResult page;
    do {
        page = Async::FetchRecords(database, RECORD_TYPE, {}, PAGE_SIZE, page.cursor).Start().get();
        ThrowIfError(page.error, "reading the cloud");
        for (const NBRecord &record : page.records) {
            contents.emplace(record.GetRecordId(), ToContent(record));
        }
    } while (!page.cursor.empty());
    return contents;
}
