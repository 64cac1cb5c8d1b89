// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HCF_RESULT_H
#define HCF_RESULT_H

#ifdef __cplusplus
extern "C" {
#endif

typedef enum HcfResult {
    HCF_SUCCESS = 0,
    HCF_INVALID_PARAMS = -10001,
    HCF_NOT_SUPPORT = -10002,
    HCF_ERR_MALLOC = -20001,
    HCF_ERR_CRYPTO_OPERATION = -30001,
} HcfResult;

#ifdef __cplusplus
}
#endif

#endif // HCF_RESULT_H
