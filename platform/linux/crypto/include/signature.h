// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HCF_SIGNATURE_H
#define HCF_SIGNATURE_H

#include <stdbool.h>
#include "algorithm_parameter.h"
#include "blob.h"
#include "object_base.h"
#include "pub_key.h"
#include "result.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HcfVerify HcfVerify;

struct HcfVerify {
    HcfObjectBase base;

    // Once per object. Keeps the key, so that its pair may end first. `params` is not looked at.
    HcfResult (*init)(HcfVerify *self, HcfParamsSpec *params, HcfPubKey *publicKey);

    // Adds a part of the data. An empty part gives HCF_INVALID_PARAMS.
    HcfResult (*update)(HcfVerify *self, HcfBlob *data);

    // Whether the signature is that of the data added so far followed by `data`, which may be null or empty. PSS signatures
    // may have any salt length. False also before init and for a null or empty signature.
    bool (*verify)(HcfVerify *self, HcfBlob *data, HcfBlob *signatureData);
};

// `algoName` is "<key>|PSS|<digest>|MGF1_<digest>" or "<key>|PKCS1|<digest>", where <key> is a name of
// HcfAsyKeyGeneratorCreate (the size is not compared with the key's) and <digest> one of SHA1, SHA224, SHA256, SHA384,
// SHA512. HCF_NOT_SUPPORT for other names. After any error `returnObj` is as it was.
HcfResult HcfVerifyCreate(const char *algoName, HcfVerify **returnObj);

#ifdef __cplusplus
}
#endif

#endif // HCF_SIGNATURE_H
