// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HCF_ASY_KEY_GENERATOR_H
#define HCF_ASY_KEY_GENERATOR_H

#include "algorithm_parameter.h"
#include "blob.h"
#include "key_pair.h"
#include "object_base.h"
#include "result.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HcfAsyKeyGenerator HcfAsyKeyGenerator;

// Independent of the pairs it made.
struct HcfAsyKeyGenerator {
    HcfObjectBase base;

    // A new random pair of the size in the generator's name. `params` is not looked at.
    HcfResult (*generateKeyPair)(HcfAsyKeyGenerator *self, HcfParamsSpec *params, HcfKeyPair **returnKeyPair);

    // A pair of the one public key in `pubKeyBlob`: X.509 SubjectPublicKeyInfo in DER, of an RSA key of any size. Anything
    // else gives HCF_INVALID_PARAMS. Private keys are not read: a filled `priKeyBlob` gives HCF_NOT_SUPPORT. `params` is
    // not looked at.
    HcfResult (*convertKey)(HcfAsyKeyGenerator *self, HcfParamsSpec *params, HcfBlob *pubKeyBlob, HcfBlob *priKeyBlob,
        HcfKeyPair **returnKeyPair);
};

// `algoName` is "RSA" and one of 512, 768, 1024, 2048, 3072, 4096, 8192. HCF_NOT_SUPPORT for other names. After any error
// `returnObj` is as it was.
HcfResult HcfAsyKeyGeneratorCreate(const char *algoName, HcfAsyKeyGenerator **returnObj);

#ifdef __cplusplus
}
#endif

#endif // HCF_ASY_KEY_GENERATOR_H
