// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HCF_KEY_PAIR_H
#define HCF_KEY_PAIR_H

#include "object_base.h"
#include "pri_key.h"
#include "pub_key.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HcfKeyPair HcfKeyPair;

// Owns both keys. `priKey` is null where only a public key was given.
struct HcfKeyPair {
    HcfObjectBase base;
    HcfPriKey *priKey;
    HcfPubKey *pubKey;
};

#ifdef __cplusplus
}
#endif

#endif // HCF_KEY_PAIR_H
