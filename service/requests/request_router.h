// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_REQUESTS_REQUEST_ROUTER_H
#define NUBIS_SERVICE_REQUESTS_REQUEST_ROUTER_H

#include <string>

#include "requests/reply.h"
#include "requests/request.h"

namespace DriveService {

// Answers request texts. Any thread may call, several at once. Whatever the text is, the answer is a JSON object whose
// "code" is 0, or an ErrorCode with an "error" object beside it; nothing is thrown.
class RequestRouter {
public:
    explicit RequestRouter(ServiceContext context);

    // `callback` may be null.
    std::string Answer(
        const std::string &text, const std::string &deviceName, const ClientCallback *callback = nullptr) noexcept;

    // The answer to a request that was refused before it was read.
    static std::string Refuse(const Failure &failure) noexcept;

    // For a request that has been read already; every answer gets its "uuid".
    std::string AnswerWithUuid(Json::Value &&json, const std::string &uuid, const std::string &deviceName,
        const ClientCallback *callback) noexcept;

private:
    Reply Dispatch(Json::Value &&json, const std::string &deviceName, const ClientCallback *callback);

    ServiceContext context_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_REQUESTS_REQUEST_ROUTER_H
