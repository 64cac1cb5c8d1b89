// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HCF_ALGORITHM_NAME_H
#define HCF_ALGORITHM_NAME_H

#include <string_view>

#include <openssl/evp.h>

namespace Host {

// The number of bits that a key's name such as "RSA3072" tells; 0 when it is not the name of one.
int RsaBitsOf(std::string_view name);

struct SignatureScheme {
    int padding = 0;
    const EVP_MD *digest = nullptr;
    // Of the mask generation; null where the padding has none.
    const EVP_MD *maskDigest = nullptr;
};

// False when `name` is not the name of one.
bool ParseSignatureScheme(std::string_view name, SignatureScheme &scheme);

} // namespace Host

#endif // HCF_ALGORITHM_NAME_H
