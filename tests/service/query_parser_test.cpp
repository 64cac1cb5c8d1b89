// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "query/query_parser.h"

#include "catalogue/catalogue_parser.h"
#include "service_fixture.h"
#include "util/failure.h"

#include <rapidcheck/gtest.h>

namespace DriveService {

namespace {

const RecordTypeRule &Person()
{
    static const auto *entry = new AppEntry(ParseCatalogueEntry(PeopleEntry()).entry);
    return *entry->defaultContainer.FindType("person");
}

TEST(QueryParserTest, ConditionsAndOrderingsAreRead)
{
    ParsedQuery query =
        ParseQuery("name=a=b&age!=-3&active=true&height<1e3&orderBy=age desc,name,height asc", Person());
    ASSERT_EQ(query.conditions.size(), 4u);
    EXPECT_EQ(query.conditions[0].value, IndexedValue(std::string("a=b"))) << "only the first operator counts";
    EXPECT_EQ(query.conditions[1].op, CompareOp::NOT_EQUAL);
    EXPECT_EQ(query.conditions[1].value, IndexedValue(int64_t{-3}));
    EXPECT_EQ(query.conditions[2].value, IndexedValue(int64_t{1}));
    EXPECT_EQ(query.conditions[3].op, CompareOp::LESS);
    EXPECT_EQ(query.conditions[3].value, IndexedValue(1000.0));
    ASSERT_EQ(query.order.size(), 3u);
    EXPECT_TRUE(query.order[0].descending);
    EXPECT_FALSE(query.order[1].descending);
    EXPECT_EQ(query.order[1].kind, ValueKind::TEXT);
    EXPECT_EQ(query.order[2].kind, ValueKind::REAL);
}

struct BadQuery {
    std::string text;
    ErrorCode code;
    const char *message;
    const char *position;
};

TEST(QueryParserTest, ErrorsNameTheField)
{
    std::string manyConditions = "age=1";
    for (int i = 0; i < 32; ++i) {
        manyConditions += "&age=1";
    }
    const BadQuery cases[] = {
        {"shoe=1", ErrorCode::UNKNOWN_FIELD, "has no field \"shoe\" to query", "shoe"},
        {"orderBy=shoe", ErrorCode::UNKNOWN_FIELD, "has no field \"shoe\" to query", "shoe"},
        {"props=1", ErrorCode::INVALID_QUERY, "field \"props\" is not queryable", "props"},
        {"photo=1", ErrorCode::INVALID_QUERY, "has the type Blob, which cannot be queried", "photo"},
        {"tags=x", ErrorCode::INVALID_QUERY,
            "operator \"=\" does not apply to field \"tags\", whose type is List of String", "tags"},
        {"age~1", ErrorCode::INVALID_QUERY, "operator \"~\" does not apply to field \"age\"", "age"},
        {"active<true", ErrorCode::INVALID_QUERY, "operator \"<\" does not apply", "active"},
        {"friend>a", ErrorCode::INVALID_QUERY, "whose type is Reference", "friend"},
        {"age>x", ErrorCode::INVALID_QUERY, "is compared as Integer, which \"x\" is not", "age"},
        {"age=1.5", ErrorCode::INVALID_QUERY, "is compared as Integer, which \"1.5\" is not", "age"},
        {"age=9223372036854775808", ErrorCode::INVALID_QUERY, "is compared as Integer", "age"},
        {"height=nan", ErrorCode::INVALID_QUERY, "is compared as Double, which \"nan\" is not", "height"},
        {"active=1", ErrorCode::INVALID_QUERY, "is compared as Boolean", "active"},
        {"scores~x", ErrorCode::INVALID_QUERY, "is compared as Integer", "scores"},
        {"name", ErrorCode::INVALID_QUERY, "expected FIELD OPERATOR VALUE, found \"name\"", "name"},
        {"=1", ErrorCode::INVALID_QUERY, "expected FIELD OPERATOR VALUE", "=1"},
        {"name=a&&age=1", ErrorCode::INVALID_QUERY, "expected FIELD OPERATOR VALUE, found \"\"", ""},
        {"name!a", ErrorCode::INVALID_QUERY, "after \"name\" expected one of = != < <= > >= ~", "name"},
        {"name=%2", ErrorCode::INVALID_QUERY, "write %25 for '%'", "name"},
        {"name=%zz", ErrorCode::INVALID_QUERY, "write %25 for '%'", "name"},
        {"name=%ff", ErrorCode::INVALID_QUERY, "is not valid UTF-8", "name"},
        {"orderBy=tags", ErrorCode::INVALID_QUERY, "field \"tags\" is not sortable", "tags"},
        {"orderBy=age up", ErrorCode::INVALID_QUERY, "expected \"asc\" or \"desc\", found \"up\"", "age"},
        {"orderBy=age,age", ErrorCode::INVALID_QUERY, "orderBy names \"age\" twice", "age"},
        {"orderBy=age&orderBy=name", ErrorCode::INVALID_QUERY, "orderBy is there twice", "orderBy"},
        {manyConditions, ErrorCode::INVALID_QUERY, "more than 32 conditions", "queryParam"},
        {"name=" + std::string(70000, 'x'), ErrorCode::INVALID_QUERY, "more than 65536 bytes", "queryParam"},
    };
    for (const BadQuery &test : cases) {
        try {
            ParseQuery(test.text, Person());
            ADD_FAILURE() << test.text.substr(0, 80) << " was accepted";
        } catch (const RequestError &error) {
            EXPECT_EQ(error.GetFailure().code, test.code) << test.text.substr(0, 80);
            EXPECT_THAT(error.what(), testing::HasSubstr(test.message));
            EXPECT_EQ(error.GetFailure().details[0].position, test.position);
        }
    }
}

// A client that escapes every byte can ask for any text.
RC_GTEST_PROP(QueryParserTest, EveryTextCanBeAskedFor, (std::vector<uint8_t> bytes))
{
    std::string text;
    std::string escaped;
    for (uint8_t byte : bytes) {
        char c = static_cast<char>(byte & 0x7F);
        constexpr const char *DIGITS = "0123456789ABCDEF";
        text += c;
        escaped += std::string("%") + DIGITS[(byte & 0x7F) >> 4] + DIGITS[byte & 0xF];
    }
    RC_ASSERT(ParseQuery("name~" + escaped, Person()).conditions[0].value == IndexedValue(text));
}

} // namespace

} // namespace DriveService
