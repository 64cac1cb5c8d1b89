// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_INPUT_TEXT_H
#define NUBIS_TOOL_INPUT_TEXT_H

#include <cstddef>
#include <fstream>
#include <istream>
#include <string>

namespace NubisTool {

constexpr size_t MAX_INPUT_BYTES = 1024UL * 1024 * 1024;

// The file that an argument names, or the standard input when that is "-". Throws CommandError when it is empty or
// cannot be read.
class Input {
public:
    Input(const std::string &path, std::istream &standardInput);
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;

    std::istream &Stream();
    // What stands for it in messages.
    const std::string &Name() const;

private:
    std::ifstream file_;
    std::istream *stream_;
    std::string name_;
};

// All that is left of a stream; throws CommandError when reading fails or there are more than MAX_INPUT_BYTES.
std::string ReadAll(std::istream &input, const std::string &name);

// Tells in which line of a text a place is. Places that are asked for in ascending order cost one pass altogether.
class LineCounter {
public:
    // The text must stay.
    explicit LineCounter(const std::string &text);

    // Counted from 1; a place behind the end is in the last line.
    size_t LineAt(size_t place);

private:
    const std::string &text_;
    size_t counted_ = 0;
    size_t line_ = 1;
};

} // namespace NubisTool

#endif
