// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HCF_CRYPTO_OBJECTS_H
#define HCF_CRYPTO_OBJECTS_H

#include <cstring>
#include <memory>

#include <openssl/err.h>
#include <openssl/evp.h>

#include "blob.h"
#include "object_base.h"
#include "pub_key.h"

namespace Host {

struct FreeOpenssl {
    void operator()(EVP_PKEY *key) const
    {
        EVP_PKEY_free(key);
    }

    void operator()(EVP_PKEY_CTX *context) const
    {
        EVP_PKEY_CTX_free(context);
    }

    void operator()(EVP_MD_CTX *context) const
    {
        EVP_MD_CTX_free(context);
    }
};

using KeyHandle = std::unique_ptr<EVP_PKEY, FreeOpenssl>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, FreeOpenssl>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, FreeOpenssl>;

// What a call here leaves in OpenSSL's error queue would confuse the program's own use of OpenSSL.
class ErrorMark {
public:
    ErrorMark()
    {
        ERR_set_mark();
    }

    ~ErrorMark()
    {
        ERR_pop_to_mark();
    }

    ErrorMark(const ErrorMark &) = delete;
    ErrorMark &operator=(const ErrorMark &) = delete;
};

const char *ClassOfPublicKey();

// A public key with what it stands for.
struct PublicKey : public HcfPubKey {
    KeyHandle handle;
};

inline bool HasBytes(const HcfBlob *blob)
{
    return blob != nullptr && blob->data != nullptr && blob->len > 0;
}

// Objects come as pointers to C structs that anything could have made.
inline bool IsOfClass(const HcfObjectBase &object, const char *className)
{
    return object.getClass != nullptr && std::strcmp(object.getClass(), className) == 0;
}

} // namespace Host

#endif // HCF_CRYPTO_OBJECTS_H
