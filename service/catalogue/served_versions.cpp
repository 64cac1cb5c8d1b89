// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "catalogue/served_versions.h"

#include <algorithm>
#include <limits>

#include "util/encoding.h"
#include "util/json_util.h"
#include "util/json_writer.h"

namespace DriveService {

namespace {

// The version to serve for content of this digest, and the memory of it.
int64_t Serve(int64_t written, const std::string &digest, const Json::Value &served, Json::Value &remembered)
{
    constexpr int64_t MOST = std::numeric_limits<int32_t>::max();
    int64_t version = written;
    if (served.isObject() && served["version"].isInt64()) {
        int64_t last = std::min(MOST, int64_t{served["version"].asInt64()});
        bool changed = TextMember(served, "content") != digest;
        version = std::min(MOST, std::max(written, changed ? last + 1 : last));
    }
    remembered["content"] = digest;
    remembered["version"] = Json::Int64(version);
    return version;
}

std::string DigestOf(const Json::Value &json)
{
    return HexEncode(Sha256(WriteJson(json)));
}

void RaiseContainer(ContainerEntry &container, Json::Value &reply, const Json::Value &served, Json::Value &remembered)
{
    Json::Value content = reply;
    content["schema"].removeMember("version");
    const bool known = served.isObject() && served["containers"].isObject();
    const Json::Value &last = known ? served["containers"][container.name] : Json::Value::nullSingleton();
    container.schemaVersion =
        Serve(container.schemaVersion, DigestOf(content), last, remembered["containers"][container.name]);
    reply["schema"]["version"] = Json::Int64(container.schemaVersion);
}

} // namespace

Json::Value RaiseVersions(AppEntry &entry, const Json::Value &served)
{
    Json::Value remembered(Json::objectValue);
    RaiseContainer(entry.defaultContainer, entry.reply["defaultContainer"], served, remembered);
    for (size_t i = 0; i < entry.sharedContainers.size(); ++i) {
        Json::Value &reply = entry.reply["sharedContainer"][static_cast<Json::ArrayIndex>(i)];
        RaiseContainer(entry.sharedContainers[i], reply, served, remembered);
    }
    // With the containers' versions in it: whoever raises one of those only must not go unnoticed either.
    Json::Value content = entry.reply;
    content.removeMember("schemaGroupVersion");
    entry.schemaGroupVersion = Serve(entry.schemaGroupVersion, DigestOf(content), served, remembered);
    entry.reply["schemaGroupVersion"] = Json::Int64(entry.schemaGroupVersion);
    return remembered;
}

} // namespace DriveService
