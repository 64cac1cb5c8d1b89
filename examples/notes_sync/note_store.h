// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NOTES_SYNC_NOTE_STORE_H
#define NOTES_SYNC_NOTE_STORE_H

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <SQLiteCpp/SQLiteCpp.h>

#include "note.h"

// The notes of one device, in a database of its own. The application reads and edits them here and needs no network for
// it; NoteSync carries them to the cloud and back. One thread. Throws SQLite::Exception.
class NoteStore {
public:
    explicit NoteStore(const std::string &path);

    // What the user does.
    void Add(const std::string &id, const Content &content);
    void Edit(const std::string &id, const Content &content);
    void Remove(const std::string &id);
    // What the user sees, by id.
    std::map<std::string, Content> Contents();

    // What the sync works on; deleted notes, too, until the cloud knows.
    std::optional<Note> Find(const std::string &id);
    std::vector<Note> DirtyNotes();
    void Put(const Note &note);
    void Erase(const std::string &id);
    // How far the store has followed the cloud; empty: not at all.
    std::string Cursor();
    void SetCursor(const std::string &cursor);
    // Leaves only what the user has changed, as if the cloud had not had it yet.
    void ForgetCloud();

    // Everything that the work does to the store, or nothing when it throws.
    void InTransaction(const std::function<void()> &work);

private:
    std::vector<Note> Select(SQLite::Statement statement);

    SQLite::Database database_;
};

#endif // NOTES_SYNC_NOTE_STORE_H
