// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "input_text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "command_error.h"

namespace NubisTool {

Input::Input(const std::string &path, std::istream &standardInput) : stream_(&standardInput), name_("standard input")
{
    if (path == "-") {
        return;
    }
    stream_ = &file_;
    name_ = path;
    file_.open(path, std::ios::binary);
    if (!file_ || file_.peek() == std::char_traits<char>::eof()) {
        // Opening a folder succeeds and only reading it fails, so both are asked before saying why.
        std::string reason = file_.eof() ? "the file is empty" : std::strerror(errno);
        throw CommandError(path + ": " + reason, "check the file's name and that it can be read");
    }
}

std::istream &Input::Stream()
{
    return *stream_;
}

const std::string &Input::Name() const
{
    return name_;
}

std::string ReadAll(std::istream &input, const std::string &name)
{
    std::string text;
    std::vector<char> buffer(65536);
    while (input.read(buffer.data(), static_cast<std::streamsize>(buffer.size())) || input.gcount() > 0) {
        text.append(buffer.data(), static_cast<size_t>(input.gcount()));
        if (text.size() > MAX_INPUT_BYTES) {
            throw CommandError(name + ": larger than " + std::to_string(MAX_INPUT_BYTES) + " bytes",
                "split it and give the parts one after the other");
        }
    }
    if (input.bad()) {
        throw CommandError(name + ": reading failed: " + std::strerror(errno), "check the file and its disk");
    }
    return text;
}

LineCounter::LineCounter(const std::string &text) : text_(text)
{}

size_t LineCounter::LineAt(size_t place)
{
    place = std::min(place, text_.size());
    if (place < counted_) {
        counted_ = 0;
        line_ = 1;
    }
    auto start = text_.begin();
    line_ += static_cast<size_t>(
        std::count(start + static_cast<std::ptrdiff_t>(counted_), start + static_cast<std::ptrdiff_t>(place), '\n'));
    counted_ = place;
    return line_;
}

} // namespace NubisTool
