// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_ACCOUNT_PUSH_KEY_H
#define NUBIS_SERVICE_ACCOUNT_PUSH_KEY_H

#include <mutex>
#include <string>

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

private:
    // Throws std::runtime_error when the key can be neither read nor made and kept.
    void EnsureLoaded();

    const std::string path_;
    std::mutex mutex_;
    std::string publicDer_; // guarded by mutex_; empty until loaded
};

} // namespace DriveService

#endif // NUBIS_SERVICE_ACCOUNT_PUSH_KEY_H
