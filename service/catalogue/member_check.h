// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_CATALOGUE_MEMBER_CHECK_H
#define NUBIS_SERVICE_CATALOGUE_MEMBER_CHECK_H

#include <functional>
#include <set>
#include <string>
#include <vector>

#include <json/json.h>

namespace DriveService {

// One thing wrong with a file: where ("defaultContainer.schema.recordTypes[0].name"; empty for the whole) and what.
struct Problem {
    std::string path;
    std::string text;
};

enum class Presence {
    REQUIRED,
    OPTIONAL,
};

// Checks the members of one JSON object, noting a problem for each that is missing, of the wrong type or, at Finish,
// unknown. Each operation returns what it read, or a default when there was a problem, so that checking goes on and
// finds all problems of a file at once. Lives no longer than the value and the list of problems.
class MemberCheck {
public:
    MemberCheck(const Json::Value &object, std::string path, std::vector<Problem> &problems);

    std::string Text(const char *name, Presence presence);
    int64_t Integer(const char *name, Presence presence, int64_t least, int64_t most);
    bool Boolean(const char *name, Presence presence);

    // Null when there is none or it is no array; sizes above the bound are a problem.
    const Json::Value *Array(const char *name, Presence presence);
    // Null when there is none or it is no object.
    const Json::Value *Object(const char *name, Presence presence);

    // Every member that no operation asked for is a problem.
    void Finish();

    void Report(const std::string &member, const std::string &text);
    std::string PathOf(const std::string &member) const;

private:
    const Json::Value *Find(const char *name, Presence presence, const std::string &expected);
    void ReportType(const char *name, const std::string &expected, const Json::Value &found);

    const Json::Value &object_;
    std::string path_;
    std::vector<Problem> &problems_;
    std::set<std::string> known_;
};

// Calls back with a check for each element that is an object, and notes a problem for each that is none.
void CheckEach(const Json::Value &array, const std::string &path, std::vector<Problem> &problems,
    const std::function<void(MemberCheck &)> &check);

} // namespace DriveService

#endif // NUBIS_SERVICE_CATALOGUE_MEMBER_CHECK_H
