// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "manifest.h"

#include <algorithm>
#include <exception>
#include <fstream>
#include <json/json.h>
#include <memory>
#include <sstream>
#include <sys/stat.h>

#include "host/paths.h"

namespace Host {

namespace {

constexpr size_t MAX_FILE_SIZE = size_t{1024} * 1024;
constexpr size_t MAX_NAME_SIZE = 128;

// The first complaint about a file.
class Checker {
public:
    explicit Checker(std::string file) : file_(std::move(file))
    {}

    bool Complain(const std::string &member, const std::string &expected)
    {
        if (error_.empty()) {
            error_ = file_ + ": " + (member.empty() ? "" : "member \"" + member + "\": ") + "expected " + expected;
        }
        return false;
    }

    bool ReadText(const Json::Value &object, const char *name, const std::string &where, std::string &text)
    {
        if (!object.isObject() || !object[name].isString()) {
            return Complain(where + name, "a string");
        }
        text = object[name].asString();
        if (text.find('\0') != std::string::npos) {
            return Complain(where + name, "a string without zero characters");
        }
        return true;
    }

    const std::string &Error() const
    {
        return error_;
    }

private:
    const std::string file_;
    std::string error_;
};

bool ReadAbility(const Json::Value &json, const std::string &where, Checker &checker, Manifest::Ability &ability)
{
    if (!json.isObject()) {
        return checker.Complain(where, "an object");
    }
    if (!checker.ReadText(json, "name", where + ".", ability.name)) {
        return false;
    }
    if (!IsSafeName(ability.name)) {
        return checker.Complain(where + ".name", "a name of letters, digits, '.', '_' and '-'");
    }
    const Json::Value &exec = json["exec"];
    if (!exec.isArray() || exec.empty()) {
        return checker.Complain(where + ".exec", "a list of strings, the program first");
    }
    for (const Json::Value &part : exec) {
        if (!part.isString() || (ability.exec.empty() && part.asString().empty()) ||
            part.asString().find('\0') != std::string::npos) {
            return checker.Complain(where + ".exec", "a list of strings, the program first");
        }
        ability.exec.push_back(part.asString());
    }
    const Json::Value &metadata = json["metadata"];
    if (!metadata.isNull() && !metadata.isArray()) {
        return checker.Complain(where + ".metadata", "a list of {\"name\", \"value\"}");
    }
    for (Json::ArrayIndex i = 0; i < metadata.size(); ++i) {
        std::string item = where + ".metadata[" + std::to_string(i) + "]";
        std::string name;
        std::string value;
        if (!metadata[i].isObject()) {
            return checker.Complain(item, "an object");
        }
        if (!checker.ReadText(metadata[i], "name", item + ".", name) ||
            !checker.ReadText(metadata[i], "value", item + ".", value)) {
            return false;
        }
        ability.metadata[name] = value;
    }
    return true;
}

bool ReadAbilities(const Json::Value &root, const std::string &bundleName, Checker &checker, Manifest &manifest)
{
    if (!root.isObject()) {
        return checker.Complain("", "a JSON object");
    }
    std::string name;
    if (!checker.ReadText(root, "bundleName", "", name)) {
        return false;
    }
    if (name != bundleName) {
        return checker.Complain("bundleName", "\"" + bundleName + "\", as the file is called");
    }
    const Json::Value &abilities = root["abilities"];
    if (!abilities.isArray()) {
        return checker.Complain("abilities", "a list of abilities");
    }
    for (Json::ArrayIndex i = 0; i < abilities.size(); ++i) {
        Manifest::Ability ability;
        if (!ReadAbility(abilities[i], "abilities[" + std::to_string(i) + "]", checker, ability)) {
            return false;
        }
        manifest.abilities.push_back(std::move(ability));
    }
    return true;
}

bool ReadFile(const std::string &path, std::string &text, std::string &error)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream content;
    if (!stream || !(content << stream.rdbuf())) {
        error = path + ": cannot be read";
        return false;
    }
    text = content.str();
    if (text.size() > MAX_FILE_SIZE) {
        error = path + ": is larger than " + std::to_string(MAX_FILE_SIZE) + " bytes";
        return false;
    }
    return true;
}

bool ParseManifest(const std::string &bundleName, Manifest &manifest, std::string &error)
{
    std::string text;
    if (!ReadFile(manifest.file, text, error)) {
        return false;
    }
    Json::CharReaderBuilder builder;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value root;
    std::string complaint;
    if (!reader->parse(text.data(), text.data() + text.size(), &root, &complaint)) {
        std::replace(complaint.begin(), complaint.end(), '\n', ' ');
        error = manifest.file + ": is not JSON: " + complaint;
        return false;
    }
    Checker checker(manifest.file);
    if (!ReadAbilities(root, bundleName, checker, manifest)) {
        error = checker.Error();
        return false;
    }
    return true;
}

} // namespace

const Manifest::Ability *Manifest::Find(const std::string &abilityName) const
{
    for (const auto &ability : abilities) {
        if (ability.name == abilityName) {
            return &ability;
        }
    }
    return nullptr;
}

bool IsSafeName(const std::string &name)
{
    if (name.empty() || name.size() > MAX_NAME_SIZE || name.front() == '.') {
        return false;
    }
    return name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-") ==
           std::string::npos;
}

bool ReadManifestFile(const std::string &dir, const std::string &bundleName, Manifest &manifest, std::string &error)
{
    struct stat status = {};
    manifest = Manifest{dir + "/" + bundleName + ".json", dir, {}};
    if (!IsSafeName(bundleName)) {
        error = manifest.file + ": \"" + bundleName + "\" is not the name of a bundle";
        return false;
    }
    // Reading anything else could wait, or never end.
    if (stat(manifest.file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        error = manifest.file + ": is not a file";
        return false;
    }
    try {
        return ParseManifest(bundleName, manifest, error);
    } catch (const std::exception &failure) {
        error = manifest.file + ": is not usable JSON: " + failure.what();
    } catch (...) {
        error = manifest.file + ": is not usable JSON";
    }
    return false;
}

bool ReadManifest(const std::string &bundleName, Manifest &manifest, std::string &error)
{
    std::string searched;
    if (!IsSafeName(bundleName)) {
        error = "\"" + bundleName + "\" is not the name of a bundle";
        return false;
    }
    for (const std::string &dir : ManifestDirs()) {
        struct stat status = {};
        if (stat((dir + "/" + bundleName + ".json").c_str(), &status) == 0) {
            return ReadManifestFile(dir, bundleName, manifest, error);
        }
        searched += (searched.empty() ? "" : ", ") + dir;
    }
    error = "no manifest " + bundleName + ".json in " + (searched.empty() ? "any folder" : searched) +
            "; NUBIS_MANIFEST_PATH names the folders";
    return false;
}

} // namespace Host
