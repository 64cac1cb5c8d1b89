// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_ACCOUNT_PUSH_KEY_H
#define NUBIS_SERVICE_ACCOUNT_PUSH_KEY_H

#include <memory>
#include <mutex>
#include <string>

#include <openssl/types.h>

namespace DriveService {

// The RSA-3072 key pair of a user, with which change notifications are signed. Made at the first use and kept in a PEM
// file of mode 0600. Any thread may call.
class PushKey {
public:
    explicit PushKey(std::string path);

    // Stable for a key: the beginning of the digest of the public key.
    std::string Id();

    // The SubjectPublicKeyInfo in DER as lower-case hexadecimal text.
    std::string PublicKeyHex();

    // The signature (PSS with SHA-256) of the text as lower-case hexadecimal text.
    std::string SignHex(const std::string &text);

private:
    // Throws std::runtime_error when the key can be neither read nor made and kept.
    void EnsureLoaded();

    const std::string path_;
    std::mutex mutex_;
    // Guarded by mutex_; empty until loaded.
    std::shared_ptr<EVP_PKEY> key_;
    std::string publicDer_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_ACCOUNT_PUSH_KEY_H
