// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef CRASH_NOTE_H
#define CRASH_NOTE_H

#include <cstdint>
#include <string>
#include <vector>

#include "note_builder.h"

namespace Crash {
// Long enough that a few records fill more than one page of the database.
constexpr size_t THUMBNAIL_BYTES = 700;

inline Nubis::NBRecordField TagsOf(const std::string &title)
{
    Nubis::NBFieldList tags{Nubis::NBRecordField(title)};
    return Nubis::NBRecordField(tags);
}

// A record whose fields all tell the same title, so that one that is half there can be told.
inline NubisTest::RecordBuilder NoteOf(const std::string &recordId, const std::string &title, int64_t round)
{
    return NubisTest::Note(title)
        .Id(recordId)
        .With("stars", Nubis::NBRecordField(round))
        .With("tags", TagsOf(title))
        .With("thumbnail", Nubis::NBRecordField(std::vector<uint8_t>(THUMBNAIL_BYTES, 7)));
}
} // namespace Crash

#endif // CRASH_NOTE_H
