// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_ACCOUNT_RECORD_ID_RULES_H
#define NUBIS_SERVICE_ACCOUNT_RECORD_ID_RULES_H

#include <cstdint>
#include <string>

#include "catalogue/catalogue_types.h"
#include "store/store.h"

namespace DriveService {

// A container's record id rule with everything that the catalogue leaves open filled in.
struct EffectiveIdRule {
    unsigned ruleId = 0;
    uint64_t upid = 0;
    std::string localRule;
    std::string rootId;
};

// What the service has to make (partition and root id) it makes once and keeps, with a session when that is committed.
EffectiveIdRule FindIdRule(Store &store, const std::string &bundleName, const ContainerEntry &container);
EffectiveIdRule FindIdRule(WriteSession &session, const std::string &bundleName, const ContainerEntry &container);

// A new id by the rule. Rules without a form of their own get 32 random hexadecimal digits.
//
//   rule 1: "B" + BASE64URL( BE64(upid xor low), BE64(high), BE64(low) )    33 characters
//   rule 5: "F" + the same
//   local rule "UUID": 64 hexadecimal digits
std::string MakeRecordId(const EffectiveIdRule &rule);

} // namespace DriveService

#endif // NUBIS_SERVICE_ACCOUNT_RECORD_ID_RULES_H
