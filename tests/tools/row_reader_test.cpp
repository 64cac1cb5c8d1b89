// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "row_reader.h"

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_error.h"

namespace NubisTool {
namespace {
using testing::HasSubstr;

std::vector<Row> Read(const std::string &text, RowFormat format = RowFormat::GUESS, const std::string &name = "in")
{
    std::istringstream input(text);
    return ReadRows(input, name, format);
}

std::string ErrorOf(const std::string &text, RowFormat format)
{
    try {
        Read(text, format);
    } catch (const CommandError &error) {
        EXPECT_FALSE(error.Advice().empty());
        return error.what();
    }
    return "";
}

TEST(RowReader, ReadsEveryFormatAndKnowsTheLines)
{
    std::vector<Row> array = Read("[\n{\"a\": 1},\n\n{\"a\":\n2}, {\"a\": 3}]\n");
    ASSERT_EQ(array.size(), 3U);
    EXPECT_EQ(array[0].line, 2U);
    EXPECT_EQ(array[1].line, 4U);
    EXPECT_EQ(array[2].line, 5U);
    EXPECT_EQ(array[2].values["a"].asInt(), 3);

    std::vector<Row> lines = Read("{\"a\": 1}\n\n{\"a\": 2}\n");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[1].line, 3U);
    EXPECT_FALSE(lines[1].isText);

    std::vector<Row> csv = Read("name,age\nAnn,\n\"\",5\n");
    ASSERT_EQ(csv.size(), 2U);
    EXPECT_TRUE(csv[0].isText);
    EXPECT_TRUE(csv[0].values["age"].isNull());
    EXPECT_EQ(csv[1].values["name"], Json::Value(""));
    EXPECT_EQ(csv[1].values["age"], Json::Value("5"));
    EXPECT_EQ(csv[1].line, 3U);
}

TEST(RowReader, TrustsTheNameOfAFileMoreThanItsContent)
{
    EXPECT_TRUE(Read("[x\n1\n", RowFormat::GUESS, "odd.csv")[0].values.isMember("[x"));
    EXPECT_THROW(Read("x\n1\n", RowFormat::GUESS, "odd.jsonl"), CommandError);
    EXPECT_TRUE(Read("", RowFormat::JSON).empty());
    EXPECT_TRUE(Read("[]", RowFormat::JSON).empty());
}

TEST(RowReader, RefusesBadInputByFileAndLine)
{
    EXPECT_THAT(ErrorOf("{\"a\": 1}\n{\"a\":", RowFormat::JSON), HasSubstr("in:2:"));
    EXPECT_THAT(ErrorOf("{\"a\": 1}\n5\n", RowFormat::JSON), HasSubstr("in:2: a row must be"));
    EXPECT_THAT(ErrorOf("[{\"a\": 1},\n7]", RowFormat::JSON), HasSubstr("in:2: a row must be"));
    EXPECT_THAT(ErrorOf("[{\"a\": 1}", RowFormat::JSON), HasSubstr("not valid JSON"));
    EXPECT_THAT(ErrorOf("{\"a\": 1, \"a\": 2}", RowFormat::JSON), HasSubstr("Duplicate key"));
    EXPECT_THAT(ErrorOf("a,b\n1\n", RowFormat::CSV), HasSubstr("in:2: this line has 1 fields, the heading has 2"));
    EXPECT_THAT(ErrorOf("a,a\n", RowFormat::CSV), HasSubstr("\"a\" twice"));
    EXPECT_THAT(ErrorOf("a,\n", RowFormat::CSV), HasSubstr("no name"));
    EXPECT_THAT(ErrorOf("", RowFormat::CSV), HasSubstr("no heading"));
    EXPECT_THAT(ErrorOf("a\nb\"\n", RowFormat::CSV), HasSubstr("in:2:"));
    EXPECT_THAT(ErrorOf(std::string(100000, '['), RowFormat::JSON), HasSubstr("nested too deeply"));
}

TEST(RowReader, SaysWhyAFileCannotBeRead)
{
    std::istringstream standardInput("{\"a\": 1}");
    EXPECT_EQ(ReadRowsFromFile("-", RowFormat::JSON, standardInput).size(), 1U);
    EXPECT_THROW(ReadRowsFromFile("/does/not/exist", RowFormat::JSON, standardInput), CommandError);
    EXPECT_THROW(ReadRowsFromFile("/", RowFormat::JSON, standardInput), CommandError);
}
} // namespace
} // namespace NubisTool
