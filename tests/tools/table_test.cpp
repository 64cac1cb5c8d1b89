// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "table.h"

#include <algorithm>
#include <sstream>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace NubisTool {
namespace {
TEST(Table, AlignsByWhatATerminalShows)
{
    Table table({{"NAME"}, {"N", Align::RIGHT}, {"NOTE"}});
    table.Add({"日本", "7", "x"});
    table.Add({"Zürich", "1234", ""});
    table.Add({"a\u0301"});
    std::ostringstream out;
    table.Print(out);
    EXPECT_EQ(out.str(), "NAME       N  NOTE\n"
                         "日本       7  x\n"
                         "Zürich  1234\n"
                         "a\u0301\n");
}

TEST(Table, CutsWhatIsWidestAndDisarmsControlCharacters)
{
    Table table({{"A"}, {"NUMBER", Align::RIGHT}});
    table.Add({"one\ntwo\t\033[2J\x7f", "1"});
    table.Add({std::string(100, 'x'), "123456"});
    table.Add({"日本語日本語日本語", ""});
    std::ostringstream out;
    table.Print(out, 20);
    EXPECT_EQ(out.str(), "A             NUMBER\n"
                         "one\\ntwo\\...       1\n"
                         "xxxxxxxxx...  123456\n"
                         "日本語日...\n");
    out.str("");
    table.Print(out);
    EXPECT_NE(out.str().find(std::string(100, 'x') + "  123456\n"), std::string::npos);
    out.str("");
    table.Print(out, 1);
    EXPECT_NE(out.str().find("xxxxx...  123456\n"), std::string::npos) << "what is too narrow wraps";
}

RC_GTEST_PROP(Table, NoBytesBreakALine, (const std::vector<std::string> &cells))
{
    Table table({{"A"}, {"B", Align::RIGHT}});
    for (const std::string &cell : cells) {
        table.Add({cell, cell});
    }
    std::ostringstream out;
    table.Print(out);
    std::string text = out.str();
    RC_ASSERT(static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) == cells.size() + 1);
    RC_ASSERT(text.find('\033') == std::string::npos);
}
} // namespace
} // namespace NubisTool
