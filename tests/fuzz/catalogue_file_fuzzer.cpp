// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "catalogue/catalogue_parser.h"
#include "catalogue/served_versions.h"
#include "fuzz_target.h"
#include "query/query_parser.h"
#include "util/encoding.h"
#include "util/json_util.h"

namespace {
using namespace DriveService;

// What requests take for granted of an entry without problems.
void CheckContainer(const ContainerEntry &container)
{
    FUZZ_CHECK(!container.name.empty() && container.schemaVersion >= 0);
    for (const auto &[name, rule] : container.recordTypes) {
        FUZZ_CHECK(rule.recordType == name);
        for (const std::string &field : rule.dupCheckFields) {
            FUZZ_CHECK(rule.FindField(field) != nullptr);
        }
        for (const RelationRule &relation : rule.relations) {
            FUZZ_CHECK(container.FindType(relation.recordType) != nullptr);
        }
        IndexedFieldsOf(rule);
    }
}

// Content that did not change is served under the version that it had.
void CheckVersions(const AppEntry &entry)
{
    AppEntry first = entry;
    const Json::Value remembered = RaiseVersions(first, Json::Value());
    AppEntry second = entry;
    FUZZ_CHECK(RaiseVersions(second, remembered) == remembered);
    FUZZ_CHECK(second.reply == first.reply && second.schemaGroupVersion == first.schemaGroupVersion);
}
} // namespace

// What a file says; what the service remembers of an earlier one may stand in a second line.
void Fuzz::TestOne(const std::string &input)
{
    const size_t end = input.find('\n');
    ParsedEntry parsed = ParseCatalogueText(input.substr(0, end));
    const std::string problems = DescribeProblems("file", parsed.problems);
    FUZZ_CHECK(problems.empty() == parsed.problems.empty() && IsUtf8(problems));
    if (!parsed.problems.empty()) {
        return;
    }
    FUZZ_CHECK(IsBundleName(parsed.entry.bundleName) && parsed.entry.reply.isObject());
    CheckContainer(parsed.entry.defaultContainer);
    for (const ContainerEntry &container : parsed.entry.sharedContainers) {
        CheckContainer(container);
        FUZZ_CHECK(parsed.entry.FindContainer(container.name) != nullptr);
    }
    CheckVersions(parsed.entry);
    Json::Value served;
    std::string error;
    if (end != std::string::npos && ParseJson(input.substr(end + 1), served, error)) {
        RaiseVersions(parsed.entry, served);
    }
}
