// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TOOL_DEMO_FORGER_H
#define NUBIS_TOOL_DEMO_FORGER_H

#include <memory>
#include <string>

#include <json/json.h>
#include <openssl/evp.h>

namespace NubisTool {

// Signs notifications as the service does, but with a key of its own: what an impostor could do at best.
class DemoForger {
public:
    // Makes a key. Throws CommandError when that fails.
    DemoForger();

    // The notification with this key's signature in place of the service's.
    Json::Value Sign(Json::Value notification) const;
    // In the form in which clients keep the service's key: SubjectPublicKeyInfo in DER, hexadecimal.
    std::string PublicKey() const;

private:
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_;
};

// The notification with a further record type among those that it announces.
Json::Value WithAnnounced(Json::Value notification, const std::string &recordType);

} // namespace NubisTool

#endif
