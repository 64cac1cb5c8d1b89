// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "catalogue/catalogue_parser.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>

#include "catalogue/schema_parser.h"
#include "records/limits.h"
#include "util/encoding.h"
#include "util/json_util.h"

namespace DriveService {

namespace {

constexpr uint32_t DEFAULT_MAX_BATCH_NUMBER = 10;
constexpr int64_t MOST_BATCH_NUMBER = 100000;
constexpr int64_t MAX_INT32 = std::numeric_limits<int32_t>::max();

// Members that steer the service and are not part of what clients are told.
constexpr const char *RECORD_ID_RULE = "recordIdRule";
constexpr const char *CONFIG_PARAMS = "configParams";
constexpr const char *DEMONS = "demons";

void ParseRecordIdRule(
    const Json::Value &json, const std::string &path, RecordIdRule &rule, std::vector<Problem> &problems)
{
    MemberCheck check(json, path, problems);
    if (json.isMember("ruleId")) {
        rule.ruleId = static_cast<unsigned>(check.Integer("ruleId", Presence::OPTIONAL, 0, MAX_INT32));
    }
    std::string upid = check.Text("upid", Presence::OPTIONAL);
    if (!upid.empty()) {
        uint64_t number = 0;
        auto [end, failure] = std::from_chars(upid.data(), upid.data() + upid.size(), number);
        if (failure != std::errc() || end != upid.data() + upid.size()) {
            check.Report("upid", "expected a decimal number as text, found text \"" + upid + "\"");
        }
        rule.upid = number;
    }
    rule.localRule = check.Text("localRule", Presence::OPTIONAL);
    if (json.isMember("rootId")) {
        rule.rootId = check.Text("rootId", Presence::OPTIONAL);
    }
    check.Finish();
}

void ParseContainer(
    const Json::Value &json, const std::string &path, ContainerEntry &container, std::vector<Problem> &problems)
{
    MemberCheck check(json, path, problems);
    container.name = check.Text("name", Presence::REQUIRED);
    if (container.name.size() > MAX_CONTAINER_NAME) {
        check.Report("name", "expected at most " + std::to_string(MAX_CONTAINER_NAME) + " bytes");
    }
    check.Text("databaseName", Presence::OPTIONAL);
    container.maxBatchNumber = DEFAULT_MAX_BATCH_NUMBER;
    int64_t batch = check.Integer("maxBatchNumber", Presence::OPTIONAL, 1, MOST_BATCH_NUMBER);
    if (json.isMember("maxBatchNumber")) {
        container.maxBatchNumber = static_cast<uint32_t>(batch);
    }
    if (const Json::Value *settings = check.Object("settings", Presence::OPTIONAL)) {
        MemberCheck inner(*settings, check.PathOf("settings"), problems);
        inner.Integer("optimisticLock", Presence::OPTIONAL, 0, MAX_INT32);
        inner.Finish();
    }
    if (const Json::Value *schema = check.Object("schema", Presence::REQUIRED)) {
        ParseSchema(*schema, check.PathOf("schema"), container, problems);
    }
    if (const Json::Value *rule = check.Object(RECORD_ID_RULE, Presence::OPTIONAL)) {
        ParseRecordIdRule(*rule, check.PathOf(RECORD_ID_RULE), container.recordIdRule, problems);
    }
    check.Finish();
}

void ParseContainers(MemberCheck &check, AppEntry &entry, std::vector<Problem> &problems)
{
    if (const Json::Value *json = check.Object("defaultContainer", Presence::REQUIRED)) {
        ParseContainer(*json, check.PathOf("defaultContainer"), entry.defaultContainer, problems);
    }
    const Json::Value *shared = check.Array("sharedContainer", Presence::OPTIONAL);
    if (shared == nullptr) {
        return;
    }
    for (Json::ArrayIndex i = 0; i < shared->size(); ++i) {
        std::string member = "sharedContainer[" + std::to_string(i) + "]";
        if (!(*shared)[i].isObject()) {
            check.Report(member, "expected an object, found " + DescribeJson((*shared)[i]));
            continue;
        }
        ContainerEntry container;
        ParseContainer((*shared)[i], check.PathOf(member), container, problems);
        if (!container.name.empty() && entry.FindContainer(container.name) != nullptr) {
            check.Report(member + ".name", "\"" + container.name + "\" is there twice");
        }
        entry.sharedContainers.push_back(std::move(container));
    }
}

void ParseServiceMembers(MemberCheck &check, AppEntry &entry)
{
    if (const Json::Value *params = check.Object(CONFIG_PARAMS, Presence::OPTIONAL)) {
        for (const std::string &name : params->getMemberNames()) {
            std::string member = std::string(CONFIG_PARAMS) + "." + name;
            if (!(*params)[name].isString()) {
                check.Report(member, "expected a text, found " + DescribeJson((*params)[name]));
            } else if (name == "code" || name == "error" || name == "traceId") {
                check.Report(member, "is reserved and cannot name a parameter");
            } else {
                entry.configParams[name] = (*params)[name].asString();
            }
        }
    }
    entry.demons = {"0", "1"};
    const Json::Value *demons = check.Array(DEMONS, Presence::OPTIONAL);
    if (demons == nullptr) {
        return;
    }
    entry.demons.clear();
    for (Json::ArrayIndex i = 0; i < demons->size(); ++i) {
        const Json::Value &demon = (*demons)[i];
        if (!demon.isString() || (demon.asString() != "0" && demon.asString() != "1")) {
            check.Report(std::string(DEMONS) + "[" + std::to_string(i) + "]",
                "expected \"0\" or \"1\", found " + DescribeJson(demon));
        } else {
            entry.demons.insert(demon.asString());
        }
    }
}

Json::Value ReplyOf(const Json::Value &json)
{
    Json::Value reply = json;
    reply.removeMember(CONFIG_PARAMS);
    reply.removeMember(DEMONS);
    reply["defaultContainer"].removeMember(RECORD_ID_RULE);
    if (reply.isMember("sharedContainer")) {
        for (Json::Value &container : reply["sharedContainer"]) {
            container.removeMember(RECORD_ID_RULE);
        }
    }
    return reply;
}

} // namespace

bool IsBundleName(const std::string &name)
{
    return !name.empty() && name.size() <= MAX_BUNDLE_NAME && name[0] != '.' &&
           std::all_of(name.begin(), name.end(),
               [](unsigned char c) { return std::isalnum(c) != 0 || c == '.' || c == '_' || c == '-'; });
}

ParsedEntry ParseCatalogueEntry(const Json::Value &json)
{
    ParsedEntry parsed;
    if (!json.isObject()) {
        parsed.problems.push_back({"", "expected an object, found " + DescribeJson(json)});
        return parsed;
    }
    AppEntry &entry = parsed.entry;
    MemberCheck check(json, "", parsed.problems);
    entry.bundleName = check.Text("bundleName", Presence::REQUIRED);
    if (!entry.bundleName.empty() && !IsBundleName(entry.bundleName)) {
        check.Report("bundleName", "expected letters, digits, '.', '_' and '-', not beginning with '.', found text \"" +
                                       entry.bundleName + "\"");
    }
    entry.appId = check.Text("appId", Presence::REQUIRED);
    check.Text("sha256", Presence::OPTIONAL);
    entry.schemaGroupVersion = check.Integer("schemaGroupVersion", Presence::REQUIRED, 0, MAX_INT32);
    entry.enableCloud = static_cast<int>(check.Integer("enableCloud", Presence::OPTIONAL, 0, MAX_INT32));
    entry.switchStatus = static_cast<int>(check.Integer("switchStatus", Presence::OPTIONAL, 0, 3));
    int64_t verify = check.Integer("verifyRemainSpace", Presence::OPTIONAL, 0, MAX_INT32);
    if (json.isMember("verifyRemainSpace")) {
        entry.verifyRemainSpace = static_cast<int>(verify);
    }
    ParseContainers(check, entry, parsed.problems);
    ParseServiceMembers(check, entry);
    check.Finish();
    if (parsed.problems.empty()) {
        entry.reply = ReplyOf(json);
    }
    return parsed;
}

ParsedEntry ParseCatalogueText(const std::string &text)
{
    Json::Value json;
    std::string error;
    if (!ParseJson(text, json, error)) {
        ParsedEntry parsed;
        parsed.problems.push_back({"", "expected JSON: " + error});
        return parsed;
    }
    return ParseCatalogueEntry(json);
}

std::string DescribeProblems(const std::string &file, const std::vector<Problem> &problems)
{
    std::string text;
    for (const Problem &problem : problems) {
        // An escape in the file can stand for half a character.
        text += file + ": " + ToUtf8(problem.path + (problem.path.empty() ? "" : ": ") + problem.text) + "\n";
    }
    return text;
}

} // namespace DriveService
