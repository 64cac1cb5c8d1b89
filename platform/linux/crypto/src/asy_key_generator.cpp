// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <climits>
#include <memory>
#include <new>

#include <openssl/rsa.h>
#include <openssl/x509.h>

#include "algorithm_name.h"
#include "asy_key_generator.h"
#include "crypto_objects.h"

namespace {

using Host::KeyHandle;

struct PrivateKey : public HcfPriKey {
    KeyHandle handle;
};

struct KeyPair : public HcfKeyPair {
    Host::PublicKey publicKey;
    PrivateKey privateKey;
};

struct Generator : public HcfAsyKeyGenerator {
    int bits = 0;
};

const char *ClassOfGenerator()
{
    return "HcfAsyKeyGenerator.RSA";
}

const char *ClassOfPair()
{
    return "HcfKeyPair.RSA";
}

const char *ClassOfPrivateKey()
{
    return "HcfPriKey.RSA";
}

void DestroyKey(HcfObjectBase *)
{}

void DestroyPair(HcfObjectBase *self)
{
    delete static_cast<KeyPair *>(reinterpret_cast<HcfKeyPair *>(self));
}

void DestroyGenerator(HcfObjectBase *self)
{
    delete static_cast<Generator *>(reinterpret_cast<HcfAsyKeyGenerator *>(self));
}

HcfResult MakePair(KeyHandle handle, bool hasPrivateKey, HcfKeyPair **returnKeyPair)
{
    auto *pair = new (std::nothrow) KeyPair();
    if (pair == nullptr) {
        return HCF_ERR_MALLOC;
    }
    pair->base = {ClassOfPair, DestroyPair};
    if (hasPrivateKey) {
        EVP_PKEY_up_ref(handle.get());
        pair->privateKey.base = {ClassOfPrivateKey, DestroyKey};
        pair->privateKey.handle.reset(handle.get());
        pair->priKey = &pair->privateKey;
    }
    pair->publicKey.base = {Host::ClassOfPublicKey, DestroyKey};
    pair->publicKey.handle = std::move(handle);
    pair->pubKey = &pair->publicKey;
    *returnKeyPair = pair;
    return HCF_SUCCESS;
}

HcfResult GenerateKeyPair(HcfAsyKeyGenerator *self, HcfParamsSpec *, HcfKeyPair **returnKeyPair)
{
    if (self == nullptr || returnKeyPair == nullptr || !Host::IsOfClass(self->base, ClassOfGenerator())) {
        return HCF_INVALID_PARAMS;
    }
    Host::ErrorMark mark;
    Host::KeyContext context(EVP_PKEY_CTX_new_id(EVP_PKEY_RSA, nullptr));
    EVP_PKEY *key = nullptr;
    if (context == nullptr || EVP_PKEY_keygen_init(context.get()) <= 0 ||
        EVP_PKEY_CTX_set_rsa_keygen_bits(context.get(), static_cast<Generator *>(self)->bits) <= 0 ||
        EVP_PKEY_keygen(context.get(), &key) <= 0) {
        return HCF_ERR_CRYPTO_OPERATION;
    }
    return MakePair(KeyHandle(key), true, returnKeyPair);
}

HcfResult ConvertKey(
    HcfAsyKeyGenerator *self, HcfParamsSpec *, HcfBlob *pubKeyBlob, HcfBlob *priKeyBlob, HcfKeyPair **returnKeyPair)
{
    if (self == nullptr || returnKeyPair == nullptr || !Host::IsOfClass(self->base, ClassOfGenerator())) {
        return HCF_INVALID_PARAMS;
    }
    if (Host::HasBytes(priKeyBlob)) {
        return HCF_NOT_SUPPORT;
    }
    if (!Host::HasBytes(pubKeyBlob) || pubKeyBlob->len > INT_MAX) {
        return HCF_INVALID_PARAMS;
    }
    Host::ErrorMark mark;
    const uint8_t *position = pubKeyBlob->data;
    KeyHandle handle(d2i_PUBKEY(nullptr, &position, static_cast<long>(pubKeyBlob->len)));
    if (handle == nullptr || position != pubKeyBlob->data + pubKeyBlob->len ||
        EVP_PKEY_get_base_id(handle.get()) != EVP_PKEY_RSA) {
        return HCF_INVALID_PARAMS;
    }
    return MakePair(std::move(handle), false, returnKeyPair);
}

} // namespace

const char *Host::ClassOfPublicKey()
{
    return "HcfPubKey.RSA";
}

HcfResult HcfAsyKeyGeneratorCreate(const char *algoName, HcfAsyKeyGenerator **returnObj)
{
    if (algoName == nullptr || returnObj == nullptr) {
        return HCF_INVALID_PARAMS;
    }
    int bits = Host::RsaBitsOf(algoName);
    if (bits == 0) {
        return HCF_NOT_SUPPORT;
    }
    auto *generator = new (std::nothrow) Generator();
    if (generator == nullptr) {
        return HCF_ERR_MALLOC;
    }
    generator->base = {ClassOfGenerator, DestroyGenerator};
    generator->generateKeyPair = GenerateKeyPair;
    generator->convertKey = ConvertKey;
    generator->bits = bits;
    *returnObj = generator;
    return HCF_SUCCESS;
}
