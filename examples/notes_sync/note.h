// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NOTES_SYNC_NOTE_H
#define NOTES_SYNC_NOTE_H

#include <cstdint>
#include <string>
#include <tuple>

// What the user sees of a note.
struct Content {
    std::string title;
    std::string body;
    int64_t stars = 0;

    bool operator==(const Content &other) const
    {
        return std::tie(title, body, stars) == std::tie(other.title, other.body, other.stars);
    }
    bool operator!=(const Content &other) const
    {
        return !(*this == other);
    }
};

// A row of the local store.
struct Note {
    std::string id;
    Content content;
    // The content as the cloud last had it for this device: what the user has changed is what differs from it.
    Content base;
    // That the cloud had then; 0 when it has not had the note yet.
    uint64_t version = 0;
    // The user has changed or deleted the note, and the cloud does not know.
    bool isDirty = false;
    bool isDeleted = false;
};

#endif // NOTES_SYNC_NOTE_H
