// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_UTIL_JSON_UTIL_H
#define NUBIS_SERVICE_UTIL_JSON_UTIL_H

#include <string>

#include <json/json.h>

namespace DriveService {

// Reads strict JSON: one object or array, no comments, no duplicate keys, at most 128 levels, valid UTF-8.
// Never throws for bad text; `error` then says what is wrong.
[[nodiscard]] bool ParseJson(const std::string &text, Json::Value &value, std::string &error);

// About how many values the text holds: the commas and opening brackets outside of texts. Stops counting soon above
// MAX_JSON_VALUES.
size_t CountJsonValues(const std::string &text);

// The same for a text from outside, which is refused before it is read when it has more than MAX_JSON_VALUES values.
[[nodiscard]] bool ParseForeignJson(const std::string &text, Json::Value &value, std::string &error);

// What a value is, in the words of error messages: "text \"abc\"", "integer 5", "an object" ...; long texts are cut.
std::string DescribeJson(const Json::Value &value);

// The beginning of a text from outside, short enough for a message and cut between characters.
std::string Excerpt(const std::string &text);

// The member's text, or `missing` when the value is no object, has no such member or the member is no text.
std::string TextMember(const Json::Value &value, const char *name, const std::string &missing = "");

} // namespace DriveService

#endif // NUBIS_SERVICE_UTIL_JSON_UTIL_H
