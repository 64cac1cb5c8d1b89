// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_EXCHANGE_H
#define NUBIS_EXCHANGE_H

#include <exception>

#include <json/value.h>

#include "log.h"
#include "nb_error.h"

namespace Nubis {
// Sends with send(reply) and, when that succeeded, lets readReply(reply, error) take the reply apart. A reply that cannot
// be read is NB_LOCAL_BAD_DATA: whoever waits for the outcome must get one.
template <typename Send, typename ReadReply>
NBError Exchange(Send &&send, ReadReply &&readReply)
{
    NBError error;
    try {
        Json::Value reply;
        error = send(reply);
        if (!error.HasError()) {
            readReply(reply, error);
        }
    } catch (const std::exception &e) {
        NB_LOGE("handle reply failed, %{public}s", e.what());
        error.SetLocalError(NB_LOCAL_BAD_DATA);
    }
    return error;
}
} // namespace Nubis

#endif // NUBIS_EXCHANGE_H
