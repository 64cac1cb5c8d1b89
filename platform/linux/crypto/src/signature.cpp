// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <memory>
#include <new>

#include <openssl/rsa.h>

#include "algorithm_name.h"
#include "crypto_objects.h"
#include "signature.h"

namespace {

struct Verifier : public HcfVerify {
    Host::SignatureScheme scheme;
    // Null until init.
    Host::DigestContext context;
};

const char *ClassOfVerifier()
{
    return "HcfVerify.RSA";
}

void Destroy(HcfObjectBase *self)
{
    delete static_cast<Verifier *>(reinterpret_cast<HcfVerify *>(self));
}

// Null when it is not one of ours.
Verifier *ToVerifier(HcfVerify *self)
{
    return self != nullptr && Host::IsOfClass(self->base, ClassOfVerifier()) ? static_cast<Verifier *>(self) : nullptr;
}

HcfResult Init(HcfVerify *self, HcfParamsSpec *, HcfPubKey *publicKey)
{
    Verifier *verifier = ToVerifier(self);
    if (verifier == nullptr || verifier->context != nullptr || publicKey == nullptr ||
        !Host::IsOfClass(publicKey->base, Host::ClassOfPublicKey())) {
        return HCF_INVALID_PARAMS;
    }
    Host::ErrorMark mark;
    Host::DigestContext context(EVP_MD_CTX_new());
    if (context == nullptr) {
        return HCF_ERR_MALLOC;
    }
    const Host::SignatureScheme &scheme = verifier->scheme;
    EVP_PKEY *key = static_cast<Host::PublicKey *>(publicKey)->handle.get();
    EVP_PKEY_CTX *keyContext = nullptr; // belongs to `context`
    if (EVP_DigestVerifyInit(context.get(), &keyContext, scheme.digest, nullptr, key) <= 0 ||
        EVP_PKEY_CTX_set_rsa_padding(keyContext, scheme.padding) <= 0 ||
        (scheme.maskDigest != nullptr && EVP_PKEY_CTX_set_rsa_mgf1_md(keyContext, scheme.maskDigest) <= 0)) {
        return HCF_ERR_CRYPTO_OPERATION;
    }
    verifier->context = std::move(context);
    return HCF_SUCCESS;
}

HcfResult Update(HcfVerify *self, HcfBlob *data)
{
    Verifier *verifier = ToVerifier(self);
    if (verifier == nullptr || verifier->context == nullptr || !Host::HasBytes(data)) {
        return HCF_INVALID_PARAMS;
    }
    Host::ErrorMark mark;
    return EVP_DigestVerifyUpdate(verifier->context.get(), data->data, data->len) > 0 ? HCF_SUCCESS
                                                                                      : HCF_ERR_CRYPTO_OPERATION;
}

bool Verify(HcfVerify *self, HcfBlob *data, HcfBlob *signatureData)
{
    Verifier *verifier = ToVerifier(self);
    if (verifier == nullptr || verifier->context == nullptr || !Host::HasBytes(signatureData)) {
        return false;
    }
    if (Host::HasBytes(data) && Update(self, data) != HCF_SUCCESS) {
        return false;
    }
    Host::ErrorMark mark;
    return EVP_DigestVerifyFinal(verifier->context.get(), signatureData->data, signatureData->len) == 1;
}

} // namespace

HcfResult HcfVerifyCreate(const char *algoName, HcfVerify **returnObj)
{
    if (algoName == nullptr || returnObj == nullptr) {
        return HCF_INVALID_PARAMS;
    }
    Host::SignatureScheme scheme;
    if (!Host::ParseSignatureScheme(algoName, scheme)) {
        return HCF_NOT_SUPPORT;
    }
    auto *verifier = new (std::nothrow) Verifier();
    if (verifier == nullptr) {
        return HCF_ERR_MALLOC;
    }
    verifier->base = {ClassOfVerifier, Destroy};
    verifier->init = Init;
    verifier->update = Update;
    verifier->verify = Verify;
    verifier->scheme = scheme;
    *returnObj = verifier;
    return HCF_SUCCESS;
}
