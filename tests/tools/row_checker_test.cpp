// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "row_checker.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_error.h"
#include "field_converter.h"
#include "record_json.h"
#include "schema_builder.h"

namespace NubisTool {
namespace {
using namespace Nubis;
using testing::HasSubstr;

Json::Value Parsed(const std::string &text)
{
    Json::Value value;
    std::string error;
    EXPECT_TRUE(ParseJsonText(text, value, error)) << text << ": " << error;
    return value;
}

struct Conversion {
    NBRecordFieldType type;
    std::string given;
    bool fits;
    // Empty: as given.
    std::string result = "";
};

NBSchemaField FieldOf(NBRecordFieldType type)
{
    NBSchemaField field = NubisTest::SchemaField(type, NB_FIELD_INTEGER);
    field.refRecordType = type == NB_FIELD_REFERENCE ? "Person" : "";
    return field;
}

void ExpectConversions(const std::vector<Conversion> &conversions, bool isText)
{
    for (const Conversion &conversion : conversions) {
        const Json::Value given = isText ? Json::Value(conversion.given) : Parsed(conversion.given);
        NBRecordField field;
        std::string expected;
        const bool fits = ConvertField(FieldOf(conversion.type), given, isText, field, expected);
        EXPECT_EQ(fits, conversion.fits) << FieldTypeName(conversion.type) << " " << conversion.given;
        EXPECT_TRUE(fits || !expected.empty()) << conversion.given;
        if (fits) {
            EXPECT_EQ(
                CompactText(FieldToJson(field)), conversion.result.empty() ? conversion.given : conversion.result);
        }
    }
}

TEST(FieldConverter, TakesWhatFitsTheTypeAndNothingElse)
{
    const std::vector<Conversion> conversions = {{NB_FIELD_INTEGER, "9223372036854775807", true},
        {NB_FIELD_INTEGER, "9223372036854775808", false}, {NB_FIELD_INTEGER, "1.5", false},
        {NB_FIELD_INTEGER, "\"1\"", false}, {NB_FIELD_DOUBLE, "3", true, "3.0"}, {NB_FIELD_DOUBLE, "\"3\"", false},
        {NB_FIELD_STRING, "\"日本\"", true}, {NB_FIELD_STRING, "1", false}, {NB_FIELD_BOOLEAN, "true", true},
        {NB_FIELD_BOOLEAN, "1", false}, {NB_FIELD_BLOB, "\"AAEC\"", true}, {NB_FIELD_BLOB, "\"AA=C\"", false},
        {NB_FIELD_BLOB, "\"AAE\"", false}, {NB_FIELD_BLOB, "\"\"", true}, {NB_FIELD_LIST, "[1,2]", true},
        {NB_FIELD_LIST, "[1,\"2\"]", false}, {NB_FIELD_LIST, "1", false}, {NB_FIELD_MAP, "{\"a\":1,\"b\":\"x\"}", true},
        {NB_FIELD_MAP, "{\"a\":[]}", false},
        {NB_FIELD_REFERENCE, "\"p1\"", true, "{\"recordId\":\"p1\",\"recordType\":\"Person\"}"},
        {NB_FIELD_REFERENCE, "{\"recordId\":\"p1\",\"recordType\":\"Person\"}", true},
        {NB_FIELD_REFERENCE, "{\"recordId\":\"p1\",\"recordType\":\"Place\"}", false},
        {NB_FIELD_REFERENCE, "\"\"", false}, {NB_FIELD_REFERENCE, "{}", false}, {NB_FIELD_NULL, "1", false}};
    ExpectConversions(conversions, false);
    NBRecordField field;
    std::string expected;
    EXPECT_FALSE(ConvertField(FieldOf(NB_FIELD_STRING), Json::Value("Z\xFCrich"), true, field, expected));
    EXPECT_THAT(expected, HasSubstr("UTF-8"));
}

TEST(FieldConverter, ReadsTextColumnsByTheirType)
{
    ExpectConversions({{NB_FIELD_INTEGER, "-7", true}, {NB_FIELD_INTEGER, "7x", false}, {NB_FIELD_INTEGER, " 7", false},
                          {NB_FIELD_DOUBLE, "2.5e3", true, "2500.0"}, {NB_FIELD_DOUBLE, "inf", false},
                          {NB_FIELD_BOOLEAN, "1", true, "true"}, {NB_FIELD_BOOLEAN, "yes", false},
                          {NB_FIELD_STRING, "12", true, "\"12\""}, {NB_FIELD_LIST, "[1, 2]", true, "[1,2]"},
                          {NB_FIELD_LIST, "1, 2", false},
                          {NB_FIELD_REFERENCE, "p1", true, "{\"recordId\":\"p1\",\"recordType\":\"Person\"}"}},
        true);
}

class RowCheckerTest : public testing::Test {
protected:
    RowCheckerTest()
    {
        NBSchema schema = NubisTest::SchemaBuilder()
                              .Type("Person")
                              .Field("name", NB_FIELD_STRING)
                              .Field("age", NB_FIELD_INTEGER)
                              .Field("tags", NB_FIELD_LIST, NB_FIELD_STRING)
                              .Build();
        type_ = schema.recordTypes["Person"];
        type_.fields["age"].nullable = true;
        type_.fields["tags"].nullable = true;
    }

    std::vector<ImportItem> Check(
        const std::string &text, const std::string &idField = "", Completeness completeness = Completeness::WHOLE)
    {
        std::istringstream input(text);
        problems_.clear();
        return CheckRows(RowChecker(type_, idField, completeness), ReadRows(input, "in", RowFormat::GUESS), problems_);
    }

    std::vector<std::string> Problems() const
    {
        std::vector<std::string> texts;
        for (const RowProblem &problem : problems_) {
            texts.push_back(ProblemText(problem));
        }
        return texts;
    }

    NBSchemaNode type_;
    std::vector<RowProblem> problems_;
};

TEST_F(RowCheckerTest, NamesEveryProblemWithItsPlace)
{
    Check("{\"name\": \"Ann\"}\n{\"name\": 5, \"age\": \"x\", \"hobby\": 1}\n{\"age\": 3}\n"
          "{\"recordType\": \"Place\", \"name\": \"x\"}\n");
    EXPECT_THAT(Problems(),
        testing::UnorderedElementsAre(HasSubstr("in:2: field name: expected a text"),
            HasSubstr("in:2: field age: expected a whole number"),
            HasSubstr("in:2: field hobby: expected a field of Person"), HasSubstr("in:3: field name: expected a value"),
            HasSubstr("in:4: field recordType: expected Person")));
}

TEST_F(RowCheckerTest, MakesRecordsFromFlatAndNestedRows)
{
    std::vector<ImportItem> items =
        Check("{\"name\": \"Ann\", \"age\": null}\n"
              "{\"recordId\": \"p2\", \"version\": 3, \"fields\": {\"name\": \"Bo\", \"tags\": [\"x\"]}}\n");
    ASSERT_TRUE(problems_.empty()) << Problems()[0];
    EXPECT_EQ(CompactText(RecordToJson(items[0].record)["fields"]), "{\"name\":\"Ann\"}");
    EXPECT_EQ(items[0].record.GetRecordId(), "");
    EXPECT_EQ(items[1].record.GetRecordId(), "p2");
    EXPECT_EQ(items[1].record.GetRecordType(), "Person");
    EXPECT_EQ(CompactText(RecordToJson(items[1].record)["fields"]), "{\"name\":\"Bo\",\"tags\":[\"x\"]}");
}

TEST_F(RowCheckerTest, TakesIdsFromTheNamedFieldAndRefusesSharedOnes)
{
    std::vector<ImportItem> items = Check("{\"name\": \"Max\", \"recordId\": 18446744073709551615}");
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].record.GetRecordId(), "18446744073709551615");

    items = Check("name,age\nAnn,1\nBo,2\nCy,1\nDi,\n", "age");
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[1].record.GetRecordId(), "2");
    EXPECT_THAT(
        Problems(), testing::UnorderedElementsAre(HasSubstr("in:4: expected a record id of its own, found \"1\", "
                                                            "which in:2 has already"),
                        HasSubstr("in:5: field age: expected a text or a whole number as the record's id")));
    EXPECT_THROW(RowChecker(type_, "nothing", Completeness::WHOLE), CommandError);
}

TEST_F(RowCheckerTest, PartialRowsMayLeaveOutButNotEmptyRequiredFields)
{
    std::vector<ImportItem> items = Check("{\"age\": null}", "", Completeness::PARTIAL);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(CompactText(RecordToJson(items[0].record)["fields"]), "{\"age\":null}");
    Check("{\"name\": null}", "", Completeness::PARTIAL);
    EXPECT_THAT(Problems(), testing::ElementsAre(HasSubstr("field name: expected a value")));
    type_.fields["tags"].nullable = false;
    Check("{\"name\": \"Ann\", \"tags\": []}");
    EXPECT_THAT(
        Problems(), testing::ElementsAre(HasSubstr("field tags: expected a value because the field is not nullable")));
}
} // namespace
} // namespace NubisTool
