// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HCF_ALGORITHM_PARAMETER_H
#define HCF_ALGORITHM_PARAMETER_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HcfParamsSpec HcfParamsSpec;

struct HcfParamsSpec {
    const char *(*getType)(void);
};

#ifdef __cplusplus
}
#endif

#endif // HCF_ALGORITHM_PARAMETER_H
