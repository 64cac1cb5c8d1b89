// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "catalogue/member_check.h"

#include <utility>

#include "records/limits.h"
#include "util/json_util.h"

namespace DriveService {

MemberCheck::MemberCheck(const Json::Value &object, std::string path, std::vector<Problem> &problems)
    : object_(object), path_(std::move(path)), problems_(problems)
{}

std::string MemberCheck::PathOf(const std::string &member) const
{
    if (member.empty()) {
        return path_;
    }
    return path_.empty() ? member : path_ + "." + member;
}

void MemberCheck::Report(const std::string &member, const std::string &text)
{
    problems_.push_back({PathOf(member), text});
}

void MemberCheck::ReportType(const char *name, const std::string &expected, const Json::Value &found)
{
    Report(name, "expected " + expected + ", found " + DescribeJson(found));
}

const Json::Value *MemberCheck::Find(const char *name, Presence presence, const std::string &expected)
{
    known_.insert(name);
    if (object_.isMember(name)) {
        return &object_[name];
    }
    if (presence == Presence::REQUIRED) {
        Report(name, "is missing, expected " + expected);
    }
    return nullptr;
}

std::string MemberCheck::Text(const char *name, Presence presence)
{
    std::string expected = presence == Presence::REQUIRED ? "a text that is not empty" : "a text";
    const Json::Value *value = Find(name, presence, expected);
    if (value == nullptr) {
        return "";
    }
    if (!value->isString() || (presence == Presence::REQUIRED && value->asString().empty())) {
        ReportType(name, expected, *value);
        return "";
    }
    return value->asString();
}

int64_t MemberCheck::Integer(const char *name, Presence presence, int64_t least, int64_t most)
{
    std::string expected = "an integer from " + std::to_string(least) + " to " + std::to_string(most);
    const Json::Value *value = Find(name, presence, expected);
    if (value == nullptr) {
        return least;
    }
    bool integer = value->type() == Json::intValue || value->type() == Json::uintValue;
    if (!integer || !value->isInt64() || value->asInt64() < least || value->asInt64() > most) {
        ReportType(name, expected, *value);
        return least;
    }
    return value->asInt64();
}

bool MemberCheck::Boolean(const char *name, Presence presence)
{
    const Json::Value *value = Find(name, presence, "true or false");
    if (value == nullptr) {
        return false;
    }
    if (!value->isBool()) {
        ReportType(name, "true or false", *value);
        return false;
    }
    return value->asBool();
}

const Json::Value *MemberCheck::Array(const char *name, Presence presence)
{
    const Json::Value *value = Find(name, presence, "an array");
    if (value == nullptr) {
        return nullptr;
    }
    if (!value->isArray()) {
        ReportType(name, "an array", *value);
        return nullptr;
    }
    if (value->size() > MAX_CATALOGUE_ELEMENTS) {
        Report(name, "has " + std::to_string(value->size()) + " elements, at most " +
                         std::to_string(MAX_CATALOGUE_ELEMENTS) + " are allowed");
        return nullptr;
    }
    return value;
}

const Json::Value *MemberCheck::Object(const char *name, Presence presence)
{
    const Json::Value *value = Find(name, presence, "an object");
    if (value == nullptr) {
        return nullptr;
    }
    if (!value->isObject()) {
        ReportType(name, "an object", *value);
        return nullptr;
    }
    return value;
}

void MemberCheck::Finish()
{
    for (const std::string &name : object_.getMemberNames()) {
        if (known_.count(name) == 0) {
            Report(name, "is not a known member");
        }
    }
}

void CheckEach(const Json::Value &array, const std::string &path, std::vector<Problem> &problems,
    const std::function<void(MemberCheck &)> &check)
{
    for (Json::ArrayIndex i = 0; i < array.size(); ++i) {
        std::string elementPath = path + "[" + std::to_string(i) + "]";
        if (!array[i].isObject()) {
            problems.push_back({elementPath, "expected an object, found " + DescribeJson(array[i])});
            continue;
        }
        MemberCheck element(array[i], elementPath, problems);
        check(element);
        element.Finish();
    }
}

} // namespace DriveService
