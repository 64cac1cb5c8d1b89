// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_REQUESTS_CLIENT_CALLBACK_H
#define NUBIS_SERVICE_REQUESTS_CLIENT_CALLBACK_H

#include <optional>
#include <string>

#include "iremote_object.h"
#include "refbase.h"

namespace DriveService {

// The object that a client sent along with a request, to be called by the service. A value: copies refer to the same
// object, which the client keeps until the last of them is gone. Any thread may call, several at once.
class ClientCallback {
public:
    // `object` must not be null.
    explicit ClientCallback(OHOS::sptr<OHOS::IRemoteObject> object);

    // Hands the client a JSON text and waits for what it answers, which is empty when it has nothing to say. None, with
    // a log line, when the client is gone, refuses the call or the text does not fit into a parcel. There is no time-out:
    // the call ends with the client's answer or its death. So nothing that others wait for, a write session above all,
    // may be held meanwhile.
    std::optional<std::string> Call(const std::string &requestText) const;

private:
    OHOS::sptr<OHOS::IRemoteObject> object_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_REQUESTS_CLIENT_CALLBACK_H
