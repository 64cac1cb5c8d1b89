// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_RSA_CRYPTO_H
#define NUBIS_RSA_CRYPTO_H

#include <cstdint>
#include <string>
#include <vector>

namespace Nubis {
// Signatures of the cloud side. Any thread may call.
class RsaCrypto {
public:
    // Whether the signature (RSA PSS with SHA-256) was made over the data with the private half of the key, an X.509
    // SubjectPublicKeyInfo in DER. False for everything that is no key or no signature.
    static bool VerifyWithPubKey(
        const std::vector<uint8_t> &publicKey, const std::string &data, const std::vector<uint8_t> &signature);
};
} // namespace Nubis

#endif // NUBIS_RSA_CRYPTO_H
