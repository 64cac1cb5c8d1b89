// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_CATALOGUE_CATALOGUE_PARSER_H
#define NUBIS_SERVICE_CATALOGUE_CATALOGUE_PARSER_H

#include <string>
#include <vector>

#include <json/json.h>

#include "catalogue/catalogue_types.h"
#include "catalogue/member_check.h"

namespace DriveService {

// What was read of a catalogue file: an entry to be used only when there are no problems.
struct ParsedEntry {
    AppEntry entry;
    std::vector<Problem> problems;
};

// Reads a catalogue file's JSON and checks all of it: types, words, names, references between record types, members
// that nobody knows. Never throws for bad content.
ParsedEntry ParseCatalogueEntry(const Json::Value &json);

// The same from the file's text; text that is no JSON is one problem.
ParsedEntry ParseCatalogueText(const std::string &text);

// Whether a text may name a bundle. Bundle names become file names, so only letters, digits, '.', '_' and '-' are
// allowed, and no leading '.'.
bool IsBundleName(const std::string &name);

// One line for each problem: "FILE: PATH: TEXT".
std::string DescribeProblems(const std::string &file, const std::vector<Problem> &problems);

} // namespace DriveService

#endif // NUBIS_SERVICE_CATALOGUE_CATALOGUE_PARSER_H
