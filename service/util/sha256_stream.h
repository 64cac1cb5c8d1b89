// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_UTIL_SHA256_STREAM_H
#define NUBIS_SERVICE_UTIL_SHA256_STREAM_H

#include <memory>
#include <string>
#include <string_view>

#include <openssl/evp.h>

namespace DriveService {

// The digest of bytes that come one piece after the other. Throws std::runtime_error when it cannot be computed.
class Sha256Stream {
public:
    Sha256Stream();

    void Add(std::string_view bytes);

    // In hexadecimal digits; nothing may be added any more.
    std::string FinishHex();

private:
    struct Free {
        void operator()(EVP_MD_CTX *context) const
        {
            EVP_MD_CTX_free(context);
        }
    };
    std::unique_ptr<EVP_MD_CTX, Free> context_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_UTIL_SHA256_STREAM_H
