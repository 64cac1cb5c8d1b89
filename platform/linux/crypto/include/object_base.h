// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HCF_OBJECT_BASE_H
#define HCF_OBJECT_BASE_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HcfObjectBase HcfObjectBase;

// The beginning of every object of the crypto interfaces. Objects are not thread safe: use each on one thread at a time.
// Whoever got an object from a call destroys it once.
struct HcfObjectBase {
    const char *(*getClass)(void);
    void (*destroy)(HcfObjectBase *self);
};

// Ends an object of any class; null is allowed.
void HcfObjDestroy(void *obj);

#ifdef __cplusplus
}
#endif

#endif // HCF_OBJECT_BASE_H
