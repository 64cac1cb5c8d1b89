// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "note_store.h"

#include <stdexcept>
#include <utility>

namespace {
constexpr char SCHEMA[] = R"(
    CREATE TABLE IF NOT EXISTS notes (
        id TEXT PRIMARY KEY,
        title TEXT NOT NULL, body TEXT NOT NULL, stars INTEGER NOT NULL,
        base_title TEXT NOT NULL, base_body TEXT NOT NULL, base_stars INTEGER NOT NULL,
        version INTEGER NOT NULL, dirty INTEGER NOT NULL, deleted INTEGER NOT NULL);
    CREATE TABLE IF NOT EXISTS progress (one INTEGER PRIMARY KEY CHECK (one = 1), cursor TEXT NOT NULL);
    INSERT OR IGNORE INTO progress VALUES (1, '');
)";

Content ReadContent(const SQLite::Statement &row, int first)
{
    return {
        row.getColumn(first).getString(), row.getColumn(first + 1).getString(), row.getColumn(first + 2).getInt64()};
}

void BindContent(SQLite::Statement &statement, int first, const Content &content)
{
    statement.bind(first, content.title);
    statement.bind(first + 1, content.body);
    statement.bind(first + 2, content.stars);
}
} // namespace

NoteStore::NoteStore(const std::string &path) : database_(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
{
    database_.exec(SCHEMA);
}

void NoteStore::Add(const std::string &id, const Content &content)
{
    Note note;
    note.id = id;
    note.content = content;
    note.isDirty = true;
    Put(note);
}

void NoteStore::Edit(const std::string &id, const Content &content)
{
    std::optional<Note> note = Find(id);
    if (!note || note->isDeleted) {
        throw std::invalid_argument("there is no note " + id);
    }
    note->content = content;
    note->isDirty = true;
    Put(*note);
}

void NoteStore::Remove(const std::string &id)
{
    std::optional<Note> note = Find(id);
    if (!note || note->version == 0) {
        // The cloud has never heard of it, so it need not hear of its end.
        Erase(id);
        return;
    }
    note->isDirty = true;
    note->isDeleted = true;
    Put(*note);
}

std::map<std::string, Content> NoteStore::Contents()
{
    std::map<std::string, Content> contents;
    for (Note &note : Select({database_, "SELECT * FROM notes WHERE NOT deleted"})) {
        contents.emplace(std::move(note.id), std::move(note.content));
    }
    return contents;
}

std::optional<Note> NoteStore::Find(const std::string &id)
{
    SQLite::Statement statement(database_, "SELECT * FROM notes WHERE id = ?");
    statement.bind(1, id);
    std::vector<Note> notes = Select(std::move(statement));
    return notes.empty() ? std::nullopt : std::optional<Note>(std::move(notes.front()));
}

std::vector<Note> NoteStore::DirtyNotes()
{
    return Select({database_, "SELECT * FROM notes WHERE dirty"});
}

void NoteStore::Put(const Note &note)
{
    SQLite::Statement statement(database_, "INSERT OR REPLACE INTO notes VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    statement.bind(1, note.id);
    BindContent(statement, 2, note.content);
    BindContent(statement, 5, note.base);
    statement.bind(8, static_cast<int64_t>(note.version));
    statement.bind(9, note.isDirty ? 1 : 0);
    statement.bind(10, note.isDeleted ? 1 : 0);
    statement.exec();
}

void NoteStore::Erase(const std::string &id)
{
    SQLite::Statement statement(database_, "DELETE FROM notes WHERE id = ?");
    statement.bind(1, id);
    statement.exec();
}

std::string NoteStore::Cursor()
{
    return database_.execAndGet("SELECT cursor FROM progress").getString();
}

void NoteStore::SetCursor(const std::string &cursor)
{
    SQLite::Statement statement(database_, "UPDATE progress SET cursor = ?");
    statement.bind(1, cursor);
    statement.exec();
}

void NoteStore::ForgetCloud()
{
    InTransaction([this] {
        database_.exec(
            "DELETE FROM notes WHERE NOT dirty; UPDATE notes SET version = 0; UPDATE progress SET cursor = ''");
    });
}

void NoteStore::InTransaction(const std::function<void()> &work)
{
    SQLite::Transaction transaction(database_);
    work();
    transaction.commit();
}

std::vector<Note> NoteStore::Select(SQLite::Statement statement)
{
    std::vector<Note> notes;
    while (statement.executeStep()) {
        Note note;
        note.id = statement.getColumn(0).getString();
        note.content = ReadContent(statement, 1);
        note.base = ReadContent(statement, 4);
        note.version = static_cast<uint64_t>(statement.getColumn(7).getInt64());
        note.isDirty = statement.getColumn(8).getInt() != 0;
        note.isDeleted = statement.getColumn(9).getInt() != 0;
        notes.push_back(std::move(note));
    }
    return notes;
}
