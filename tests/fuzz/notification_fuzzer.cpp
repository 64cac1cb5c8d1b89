// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <json/value.h>

#include "fuzz_kit.h"
#include "fuzz_target.h"
#include "json_helper.h"
#include "signing_key.h"

using Nubis::JsonHelper;

namespace {
void UsePushKey(const std::string &hex)
{
    Json::Value reply;
    reply["userInfo"]["pushKeyValue"] = hex;
    Nubis::NBUserInfo userInfo;
    Fuzz::Kit()->GetUserInfoFromJson(reply, userInfo);
}
} // namespace

// An input may bring its own key, as a broken service could. With the key of this process none verifies: nobody else
// can sign with it.
void Fuzz::TestOne(const std::string &input)
{
    static const std::string goodKey = NubisTest::SigningKey(2048).PublicHex();
    const auto &kit = Kit();
    const Json::Value notification = JsonHelper::StringToJson(input);
    UsePushKey(JsonHelper::GetStringFromJson(notification, "pushKeyValue"));
    kit->VerifyNotificationFromJson(notification);
    UsePushKey(goodKey);
    FUZZ_CHECK(kit->VerifyNotificationFromJson(notification).HasError());

    Nubis::NBRecordChangeEvent event;
    FUZZ_CHECK(!kit->ResolveNotificationEvent(input, event).HasError());
    Nubis::NBRecordChangeEvent twice = event;
    FUZZ_CHECK(!kit->ResolveNotificationEvent(input, twice).HasError());
    FUZZ_CHECK(twice.databaseScopes.size() == 2 * event.databaseScopes.size());
    FUZZ_CHECK(twice.recordTypes.size() == 2 * event.recordTypes.size());
    FUZZ_CHECK(twice.properties == event.properties && twice.bundleName == event.bundleName);
    for (const auto scope : event.databaseScopes) {
        FUZZ_CHECK(scope == Nubis::NB_DATABASE_PRIVATE || scope == Nubis::NB_DATABASE_SHARED);
    }
    Nubis::NBRecordChangeEvent parts;
    kit->ResolveNotificationEvent(input, input, input, input, parts);
}
