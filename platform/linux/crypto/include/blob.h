// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HCF_BLOB_H
#define HCF_BLOB_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HcfBlob HcfBlob;

// Bytes of the caller's. They are only read, and only during the call that they are given to.
struct HcfBlob {
    uint8_t *data;
    size_t len;
};

#ifdef __cplusplus
}
#endif

#endif // HCF_BLOB_H
