// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HCF_PUB_KEY_H
#define HCF_PUB_KEY_H

#include "object_base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HcfPubKey HcfPubKey;

// Belongs to the key pair it stands in, and ends with it; destroying it does nothing.
struct HcfPubKey {
    HcfObjectBase base;
};

#ifdef __cplusplus
}
#endif

#endif // HCF_PUB_KEY_H
