// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "csv_reader.h"

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace NubisTool {
namespace {
using Rows = std::vector<std::vector<std::string>>;

Rows ReadAll(const std::string &text, CsvLimits limits = {})
{
    std::istringstream input(text);
    CsvReader reader(input, limits);
    Rows rows;
    std::vector<CsvField> fields;
    size_t line = 0;
    while (reader.Next(fields, line)) {
        rows.emplace_back();
        for (const CsvField &field : fields) {
            rows.back().push_back(field.text);
        }
    }
    return rows;
}

TEST(CsvReader, ReadsWhatTheRulesAllow)
{
    EXPECT_EQ(ReadAll(""), Rows{});
    EXPECT_EQ(ReadAll("\xEF\xBB\xBF"
                      "a,b\r\n1,2\r\n"),
        (Rows{{"a", "b"}, {"1", "2"}}));
    EXPECT_EQ(ReadAll("a,b\n1,2"), (Rows{{"a", "b"}, {"1", "2"}}));
    EXPECT_EQ(ReadAll("\"x \"\"y\"\", z\",\"two\r\nlines\"\n"), (Rows{{"x \"y\", z", "two\r\nlines"}}));
    EXPECT_EQ(ReadAll("a,\n,b\n\n\n,\n"), (Rows{{"a", ""}, {"", "b"}, {"", ""}}));
}

TEST(CsvReader, TellsMissingFromEmptyAndWhereARecordStarts)
{
    std::istringstream input("h\n\"\",\n\"a\nb\",c\n\nlast,x\n");
    CsvReader reader(input);
    std::vector<CsvField> fields;
    size_t line = 0;
    ASSERT_TRUE(reader.Next(fields, line));
    ASSERT_TRUE(reader.Next(fields, line));
    EXPECT_EQ(line, 2U);
    EXPECT_TRUE(fields[0].quoted);
    EXPECT_FALSE(fields[1].quoted);
    ASSERT_TRUE(reader.Next(fields, line));
    EXPECT_EQ(line, 3U);
    ASSERT_TRUE(reader.Next(fields, line));
    EXPECT_EQ(line, 6U);
    EXPECT_FALSE(reader.Next(fields, line));
}

TEST(CsvReader, RefusesWhatBreaksTheRulesAndNamesTheLine)
{
    const std::vector<std::pair<std::string, size_t>> broken = {{"a\n\"open\nnever closed", 2}, {"a\nb\n\"c\"d\n", 3},
        {"a\nb\"c\n", 2}, {"a\rb\n", 1}, {"x,y\n" + std::string(11, 'z'), 2}, {"1,2,3,4\n", 1}};
    for (const auto &[text, line] : broken) {
        try {
            ReadAll(text, {10, 3});
            FAIL() << text;
        } catch (const CsvError &error) {
            EXPECT_EQ(error.Line(), line) << text << ": " << error.what();
        }
    }
}

RC_GTEST_PROP(CsvReader, GivesBackWhatWasQuoted, (const std::vector<std::pair<std::string, std::string>> &rows))
{
    auto quote = [](const std::string &text) {
        std::string quoted = "\"";
        for (char character : text) {
            quoted += character == '"' ? "\"\"" : std::string(1, character);
        }
        return quoted + "\"";
    };
    std::string text;
    Rows expected;
    for (const auto &[first, second] : rows) {
        text += quote(first) + "," + quote(second) + "\r\n";
        expected.push_back({first, second});
    }
    RC_ASSERT(ReadAll(text) == expected);
}
} // namespace
} // namespace NubisTool
