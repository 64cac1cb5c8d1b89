// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "table.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace NubisTool {
namespace {

constexpr size_t COLUMN_GAP = 2;
// Less of a cell would say nothing; a terminal that is narrower wraps the lines.
constexpr size_t LEAST_WIDTH = 8;

struct Range {
    uint32_t first;
    uint32_t last;
};

constexpr std::array<Range, 9> ZERO_WIDTH = {{{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x064B, 0x065F},
    {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x20D0, 0x20FF}, {0xFE00, 0xFE2F}}};
constexpr std::array<Range, 7> DOUBLE_WIDTH = {{{0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3}, {0xF900, 0xFAFF},
    {0xFF00, 0xFF60}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}}};

template <size_t N>
bool Contains(const std::array<Range, N> &ranges, uint32_t codePoint)
{
    return std::any_of(ranges.begin(), ranges.end(),
        [codePoint](const Range &range) { return codePoint >= range.first && codePoint <= range.last; });
}

struct Character {
    size_t bytes = 1;
    size_t width = 1;
};

// The character that starts at a position; a byte that is no valid UTF-8 counts as a character of its own.
Character CharacterAt(const std::string &text, size_t position)
{
    auto lead = static_cast<unsigned char>(text[position]);
    size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 1;
    if (length == 1 || position + length > text.size()) {
        return {};
    }
    uint32_t codePoint = lead & (0xFFU >> (length + 1));
    for (size_t i = 1; i < length; ++i) {
        auto byte = static_cast<unsigned char>(text[position + i]);
        if ((byte & 0xC0U) != 0x80U) {
            return {};
        }
        codePoint = (codePoint << 6U) | (byte & 0x3FU);
    }
    size_t width = Contains(ZERO_WIDTH, codePoint) ? 0 : Contains(DOUBLE_WIDTH, codePoint) ? 2 : 1;
    return {length, width};
}

std::string Cut(const std::string &text, size_t maxWidth)
{
    constexpr size_t dots = 3;
    if (DisplayWidth(text) <= maxWidth) {
        return text;
    }
    size_t width = 0;
    size_t position = 0;
    while (position < text.size()) {
        Character character = CharacterAt(text, position);
        if (width + character.width > maxWidth - dots) {
            break;
        }
        width += character.width;
        position += character.bytes;
    }
    return text.substr(0, position) + "...";
}

void Fit(std::vector<size_t> &widths, size_t width)
{
    size_t total = COLUMN_GAP * (widths.size() - 1);
    for (size_t &one : widths) {
        one = std::min(one, std::max(width, LEAST_WIDTH));
        total += one;
    }
    for (; total > width; --total) {
        auto widest = std::max_element(widths.begin(), widths.end());
        if (*widest <= LEAST_WIDTH) {
            return;
        }
        --*widest;
    }
}

void PrintRow(std::ostream &out, const std::vector<std::string> &cells, const std::vector<Column> &columns,
    const std::vector<size_t> &widths)
{
    std::string line;
    for (size_t i = 0; i < columns.size(); ++i) {
        const std::string cell = Cut(cells[i], widths[i]);
        std::string padding(widths[i] - DisplayWidth(cell), ' ');
        if (i > 0) {
            line.append(COLUMN_GAP, ' ');
        }
        line += columns[i].align == Align::RIGHT ? padding + cell : cell + padding;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

} // namespace

std::string Printable(const std::string &text)
{
    std::string escaped;
    escaped.reserve(text.size());
    for (char character : text) {
        auto byte = static_cast<unsigned char>(character);
        if (character == '\n') {
            escaped += "\\n";
        } else if (character == '\t') {
            escaped += "\\t";
        } else if (byte < 0x20 || byte == 0x7F) {
            std::array<char, 8> buffer{};
            std::snprintf(buffer.data(), buffer.size(), "\\x%02x", byte);
            escaped += buffer.data();
        } else {
            escaped.push_back(character);
        }
    }
    return escaped;
}

size_t DisplayWidth(const std::string &text)
{
    size_t width = 0;
    for (size_t position = 0; position < text.size();) {
        Character character = CharacterAt(text, position);
        width += character.width;
        position += character.bytes;
    }
    return width;
}

Table::Table(std::vector<Column> columns) : columns_(std::move(columns))
{}

void Table::Add(std::vector<std::string> cells)
{
    cells.resize(columns_.size());
    rows_.push_back(std::move(cells));
}

bool Table::Empty() const
{
    return rows_.empty();
}

void Table::Print(std::ostream &out, size_t width) const
{
    std::vector<std::string> titles;
    std::vector<size_t> widths;
    for (const Column &column : columns_) {
        titles.push_back(column.title);
        widths.push_back(DisplayWidth(column.title));
    }
    std::vector<std::vector<std::string>> shown = rows_;
    for (auto &row : shown) {
        for (size_t i = 0; i < row.size(); ++i) {
            row[i] = Printable(row[i]);
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
        }
    }
    if (width > 0) {
        Fit(widths, width);
    }
    PrintRow(out, titles, columns_, widths);
    for (const auto &row : shown) {
        PrintRow(out, row, columns_, widths);
    }
}

} // namespace NubisTool
