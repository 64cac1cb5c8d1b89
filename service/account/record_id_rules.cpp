// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "account/record_id_rules.h"

#include <charconv>
#include <stdexcept>

#include "account/settings.h"
#include "util/encoding.h"

namespace DriveService {

namespace {

constexpr unsigned UUID_RULE = 1;
constexpr unsigned DEFAULT_RULE = 5;
constexpr size_t HALF_BYTES = 8;
constexpr size_t LONG_ID_BYTES = 32;

// The place to keep things in is the store, or a session of it.
template <typename Keeper>
uint64_t KeptUpid(Keeper &keeper, const std::string &place)
{
    std::string account = AccountId(keeper);
    std::string text = KeptSetting(keeper, "recordId/upid/" + place,
        [&] { return std::to_string(ReadBigEndian64(Sha256(account + "/" + place))); });
    uint64_t upid = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), upid).ec != std::errc()) {
        throw std::runtime_error("the setting recordId/upid/" + place + " is no number");
    }
    return upid;
}

template <typename Keeper>
EffectiveIdRule FindRule(Keeper &keeper, const std::string &bundleName, const ContainerEntry &container)
{
    std::string place = bundleName + "/" + container.name;
    EffectiveIdRule rule;
    const RecordIdRule &written = container.recordIdRule;
    rule.ruleId = written.ruleId.value_or(DEFAULT_RULE);
    rule.localRule = written.localRule;
    rule.upid = written.upid ? *written.upid : KeptUpid(keeper, place);
    rule.rootId = written.rootId
                      ? *written.rootId
                      : KeptSetting(keeper, "recordId/rootId/" + place, [&rule] { return MakeRecordId(rule); });
    return rule;
}

} // namespace

EffectiveIdRule FindIdRule(Store &store, const std::string &bundleName, const ContainerEntry &container)
{
    return FindRule(store, bundleName, container);
}

EffectiveIdRule FindIdRule(WriteSession &session, const std::string &bundleName, const ContainerEntry &container)
{
    return FindRule(session, bundleName, container);
}

std::string MakeRecordId(const EffectiveIdRule &rule)
{
    if (rule.localRule == "UUID") {
        return HexEncode(RandomBytes(LONG_ID_BYTES));
    }
    std::string high = RandomBytes(HALF_BYTES);
    std::string low = RandomBytes(HALF_BYTES);
    if (!rule.localRule.empty() || (rule.ruleId != UUID_RULE && rule.ruleId != DEFAULT_RULE)) {
        return HexEncode(high + low);
    }
    std::string partition = BigEndian64(rule.upid ^ ReadBigEndian64(low));
    return (rule.ruleId == UUID_RULE ? "B" : "F") + Base64UrlEncode(partition + high + low);
}

} // namespace DriveService
