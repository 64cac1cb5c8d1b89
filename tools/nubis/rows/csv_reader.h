// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_CSV_READER_H
#define NUBIS_TOOL_CSV_READER_H

#include <cstddef>
#include <istream>
#include <stdexcept>
#include <string>
#include <vector>

namespace NubisTool {

struct CsvLimits {
    size_t maxFieldBytes = size_t{16} * 1024 * 1024;
    size_t maxFields = 4096;
};

struct CsvField {
    std::string text;
    // An empty field without quotes is a missing value, "" is an empty text.
    bool quoted = false;
};

class CsvError : public std::runtime_error {
public:
    CsvError(size_t line, const std::string &what) : std::runtime_error(what), line_(line)
    {}

    // Counted from 1.
    size_t Line() const
    {
        return line_;
    }

private:
    size_t line_;
};

// Reads comma separated values as RFC 4180 writes them, one record at a time; lines may also end in a bare line feed,
// and a byte order mark in front is passed over. Input that breaks the rules is refused with its line, never guessed at.
class CsvReader {
public:
    explicit CsvReader(std::istream &input, CsvLimits limits = {});

    // The next record and the line it starts on; false at the end of the input. Empty lines are passed over.
    bool Next(std::vector<CsvField> &fields, size_t &line);

private:
    int Peek();
    int Take();
    // The line is where the field begins: a quote that is never closed runs on to anywhere.
    void Append(CsvField &field, char character, size_t line) const;
    CsvField ReadField();
    void ReadQuoted(CsvField &field);
    bool TakeLineEnd();

    std::istream &input_;
    CsvLimits limits_;
    size_t line_ = 1;
};

} // namespace NubisTool

#endif
