// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "rsa_crypto.h"

#include <memory>

#include "asy_key_generator.h"
#include "blob.h"
#include "key_pair.h"
#include "object_base.h"
#include "result.h"
#include "signature.h"

#include "log.h"

namespace Nubis {
namespace {
constexpr const char *KEY_ALGORITHM = "RSA3072";
constexpr const char *VERIFY_ALGORITHM = "RSA3072|PSS|SHA256|MGF1_SHA256";
[[maybe_unused]] constexpr const char *CIPHER_ALGORITHM = "RSA3072|PKCS1_OAEP|SHA256|MGF1_SHA256";

struct Destroy {
    void operator()(void *object) const
    {
        HcfObjDestroy(object);
    }
};

template <typename Object>
using Owned = std::unique_ptr<Object, Destroy>;

// The framework takes no constant bytes but only reads them.
HcfBlob BlobOf(const uint8_t *data, size_t size)
{
    return {const_cast<uint8_t *>(data), size};
}

// Null when the bytes are no key.
Owned<HcfKeyPair> ConvertKey(const std::vector<uint8_t> &publicKey)
{
    HcfAsyKeyGenerator *created = nullptr;
    HcfResult result = HcfAsyKeyGeneratorCreate(KEY_ALGORITHM, &created);
    const Owned<HcfAsyKeyGenerator> generator(created);
    if (result != HCF_SUCCESS || generator == nullptr) {
        NB_LOGE("verify data failed, generator failed, code: %{public}d", static_cast<int>(result));
        return nullptr;
    }
    HcfBlob keyBlob = BlobOf(publicKey.data(), publicKey.size());
    HcfKeyPair *converted = nullptr;
    result = generator->convertKey(generator.get(), nullptr, &keyBlob, nullptr, &converted);
    Owned<HcfKeyPair> pair(converted);
    if (result != HCF_SUCCESS || pair == nullptr) {
        NB_LOGE("verify data failed, convertKey failed, code: %{public}d", static_cast<int>(result));
        return nullptr;
    }
    return pair;
}
} // namespace

bool RsaCrypto::VerifyWithPubKey(
    const std::vector<uint8_t> &publicKey, const std::string &data, const std::vector<uint8_t> &signature)
{
    const Owned<HcfKeyPair> pair = ConvertKey(publicKey);
    if (pair == nullptr) {
        return false;
    }
    HcfVerify *created = nullptr;
    HcfResult result = HcfVerifyCreate(VERIFY_ALGORITHM, &created);
    const Owned<HcfVerify> verifier(created);
    if (result != HCF_SUCCESS || verifier == nullptr) {
        NB_LOGE("verify data failed, verify create failed, code: %{public}d", static_cast<int>(result));
        return false;
    }
    result = verifier->init(verifier.get(), nullptr, pair->pubKey);
    if (result != HCF_SUCCESS) {
        NB_LOGE("verify data failed, verify init failed, code: %{public}d", static_cast<int>(result));
        return false;
    }
    HcfBlob dataBlob = BlobOf(reinterpret_cast<const uint8_t *>(data.data()), data.size());
    HcfBlob signatureBlob = BlobOf(signature.data(), signature.size());
    return verifier->verify(verifier.get(), &dataBlob, &signatureBlob);
}
} // namespace Nubis
