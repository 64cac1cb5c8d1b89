// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_UTIL_JSON_WRITER_H
#define NUBIS_SERVICE_UTIL_JSON_WRITER_H

#include <string>
#include <string_view>
#include <vector>

#include <json/json.h>

namespace DriveService {

// A member of an object, whose value is JSON text already.
struct WrittenMember {
    const char *name;
    std::string_view text;
};

// Compact text in one line, UTF-8 as it is, numbers in the fewest digits that read as the same number.
std::string WriteJson(const Json::Value &value);

// The same of an object, with more members behind its own.
std::string WriteJson(const Json::Value &object, const std::vector<WrittenMember> &more);

// An array whose elements are written one after the other, so that a large one never stands in memory as values.
class JsonList {
public:
    // An element, which is JSON text already.
    void Append(const std::string &text);

    // The text of the whole array; nothing is appended after it.
    std::string Take();

private:
    std::string text_ = "[";
};

} // namespace DriveService

#endif // NUBIS_SERVICE_UTIL_JSON_WRITER_H
