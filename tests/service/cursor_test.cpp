// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "query/cursor.h"

#include "service_fixture.h"
#include "util/failure.h"

#include <rapidcheck/gtest.h>

namespace DriveService {

namespace {

const std::vector<SortKey> ORDER = {
    {"age", ValueKind::INTEGER, false}, {"h", ValueKind::REAL, true}, {"n", ValueKind::TEXT, false}};

DatabaseInfo Database(const std::string &uid = "uid-1", int64_t lastSequence = 100)
{
    DatabaseInfo database;
    database.uid = uid;
    database.lastSequence = lastSequence;
    return database;
}

template <typename Read>
std::string RefusalOf(Read read)
{
    try {
        read();
    } catch (const RequestError &error) {
        EXPECT_EQ(error.GetFailure().code, ErrorCode::INVALID_CURSOR);
        return error.what();
    }
    return "accepted";
}

RC_GTEST_PROP(CursorTest, AQueryCursorReadsBackAsItWasWritten, (int64_t age, double height, const std::string &id))
{
    QueryPosition position;
    position.keys = {IndexedValue(age), std::nullopt, IndexedValue(std::string("ö\0x", 4))};
    position.recordId = "id" + std::to_string(id.size());
    if (height != 0) {
        position.keys[1] = IndexedValue(height);
    }
    std::string cursor = WriteQueryCursor(Database(), "q", position);
    QueryPosition read = ReadQueryCursor(cursor, Database(), "q", ORDER);
    RC_ASSERT(read.keys == position.keys);
    RC_ASSERT(read.recordId == position.recordId);
}

TEST(CursorTest, CursorsOfOtherPlacesAreRefusedAndNamed)
{
    std::string change = WriteChangeCursor(Database(), 7);
    EXPECT_EQ(ReadChangeCursor(change, Database()), 7);
    EXPECT_THAT(RefusalOf([&] { ReadChangeCursor(change, Database("uid-2")); }),
        testing::AllOf(testing::HasSubstr(change),
            testing::HasSubstr("belongs to another database, or to its data before an import")));
    EXPECT_THAT(RefusalOf([&] { ReadChangeCursor(change, Database("uid-1", 6)); }),
        testing::HasSubstr("is from a later state than the database has"));
    EXPECT_THAT(
        RefusalOf([&] { ReadQueryCursor(change, Database(), "q", ORDER); }), testing::HasSubstr("is not of the kind"));
    std::string query =
        WriteQueryCursor(Database(), "q", QueryPosition{{std::nullopt, std::nullopt, std::nullopt}, "r"});
    EXPECT_THAT(RefusalOf([&] { ReadQueryCursor(query, Database(), "other", ORDER); }),
        testing::HasSubstr("belongs to another query"));
    std::string texts = WriteQueryCursor(Database(), "q", QueryPosition{{IndexedValue(std::string("t"))}, "r"});
    EXPECT_THAT(RefusalOf([&] { ReadQueryCursor(texts, Database(), "q", ORDER); }),
        testing::HasSubstr("belongs to another query"))
        << "the field was a text when the cursor was written";
}

RC_GTEST_PROP(CursorTest, ADamagedCursorIsRefused, (uint16_t place, char c))
{
    std::string cursor = WriteChangeCursor(Database(), 7);
    size_t at = place % cursor.size();
    RC_PRE(cursor[at] != c);
    cursor[at] = c;
    RC_ASSERT(RefusalOf([&] { ReadChangeCursor(cursor, Database()); }) != "accepted");
    RC_ASSERT(RefusalOf([&] { ReadChangeCursor(cursor.substr(0, at), Database()); }) != "accepted");
}

} // namespace

} // namespace DriveService
