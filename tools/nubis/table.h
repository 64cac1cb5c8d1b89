// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_TABLE_H
#define NUBIS_TOOL_TABLE_H

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace NubisTool {

enum class Align {
    LEFT,
    RIGHT
};

struct Column {
    std::string title;
    Align align = Align::LEFT;
};

// Rows under headings, every column as wide as its widest cell on a terminal. Control characters in cells are written as
// escapes, so that no stored text can move the cursor or break a line.
class Table {
public:
    explicit Table(std::vector<Column> columns);

    // Missing cells are empty; cells beyond the columns are not shown.
    void Add(std::vector<std::string> cells);
    bool Empty() const;
    // Cells that make the table wider than this are cut, those of the widest columns first, and end in "..."; with 0,
    // which is for programs and for what is to be copied, none is.
    void Print(std::ostream &out, size_t width = 0) const;

private:
    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
};

// The text with control characters as escapes.
std::string Printable(const std::string &text);

// How many columns of a terminal UTF-8 text takes: none for combining marks, two for East Asian wide characters and
// emoji, one for each byte that is not valid UTF-8.
size_t DisplayWidth(const std::string &text);

} // namespace NubisTool

#endif
