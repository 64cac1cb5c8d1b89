// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "csv_reader.h"

namespace NubisTool {
namespace {

constexpr int END = std::char_traits<char>::eof();

void SkipByteOrderMark(std::istream &input)
{
    // The first byte cannot begin a text that is not marked: UTF-8 uses it for code points of this block only.
    if (input.peek() != 0xEF) {
        return;
    }
    char mark[3] = {};
    input.read(mark, sizeof(mark));
    if (std::string(mark, sizeof(mark)) != "\xEF\xBB\xBF") {
        for (auto count = input.gcount(); count > 0; --count) {
            input.putback(mark[count - 1]);
        }
    }
}

} // namespace

CsvReader::CsvReader(std::istream &input, CsvLimits limits) : input_(input), limits_(limits)
{
    SkipByteOrderMark(input_);
}

int CsvReader::Peek()
{
    return input_.peek();
}

int CsvReader::Take()
{
    int character = input_.get();
    if (character == '\n') {
        ++line_;
    }
    return character;
}

void CsvReader::Append(CsvField &field, char character, size_t line) const
{
    if (field.text.size() >= limits_.maxFieldBytes) {
        throw CsvError(line,
            "a field is longer than " + std::to_string(limits_.maxFieldBytes) + " bytes; is a closing quote missing?");
    }
    field.text.push_back(character);
}

bool CsvReader::TakeLineEnd()
{
    if (Peek() == '\n') {
        Take();
        return true;
    }
    if (Peek() != '\r') {
        return false;
    }
    Take();
    if (Peek() != '\n' && Peek() != END) {
        throw CsvError(line_, "a carriage return stands alone; lines end in CR LF or LF");
    }
    Take();
    return true;
}

void CsvReader::ReadQuoted(CsvField &field)
{
    size_t startLine = line_;
    Take();
    field.quoted = true;
    while (true) {
        int character = Take();
        if (character == END) {
            throw CsvError(startLine, "the quoted field that begins here is never closed");
        }
        if (character != '"') {
            Append(field, static_cast<char>(character), startLine);
        } else if (Peek() == '"') {
            Append(field, static_cast<char>(Take()), startLine);
        } else {
            break;
        }
    }
    int next = Peek();
    if (next != ',' && next != '\n' && next != '\r' && next != END) {
        throw CsvError(line_, "text follows a closing quote; a quote inside a quoted field is written twice");
    }
}

CsvField CsvReader::ReadField()
{
    CsvField field;
    if (Peek() == '"') {
        ReadQuoted(field);
        return field;
    }
    while (true) {
        int next = Peek();
        if (next == ',' || next == '\n' || next == '\r' || next == END) {
            return field;
        }
        if (next == '"') {
            throw CsvError(line_, "a quote stands inside a field without quotes; put the whole field into quotes");
        }
        Append(field, static_cast<char>(Take()), line_);
    }
}

bool CsvReader::Next(std::vector<CsvField> &fields, size_t &line)
{
    while (TakeLineEnd()) {
    }
    fields.clear();
    if (Peek() == END) {
        return false;
    }
    line = line_;
    while (true) {
        if (fields.size() >= limits_.maxFields) {
            throw CsvError(line_, "a line has more than " + std::to_string(limits_.maxFields) + " fields");
        }
        fields.push_back(ReadField());
        if (Peek() == ',') {
            Take();
            continue;
        }
        if (Peek() != END) {
            TakeLineEnd();
        }
        return true;
    }
}

} // namespace NubisTool
