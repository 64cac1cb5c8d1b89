// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <openssl/crypto.h>

#include "object_base.h"

namespace {

// A process may return from main while other threads still verify: OpenSSL must not tear itself down then. Its first
// initialisation decides, hence at load time.
[[maybe_unused]] const int g_initialised = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);

} // namespace

void HcfObjDestroy(void *obj)
{
    auto *object = static_cast<HcfObjectBase *>(obj);
    if (object != nullptr && object->destroy != nullptr) {
        object->destroy(object);
    }
}
