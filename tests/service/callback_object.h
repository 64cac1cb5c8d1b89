// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_TESTS_CALLBACK_OBJECT_H
#define NUBIS_TESTS_CALLBACK_OBJECT_H

#include <functional>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <json/json.h>

#include "ipc_object_stub.h"
#include "message_parcel.h"
#include "util/json_util.h"
#include "util/parcel_text.h"

namespace DriveService {

// What a client sends along to be called back. The function gets the service's call and returns the client's answer: an
// empty one is sent as nothing at all, and "refuse" fails the transaction.
class CallbackObject : public OHOS::IPCObjectStub {
public:
    explicit CallbackObject(std::function<std::string(const Json::Value &)> answer) : answer_(std::move(answer))
    {}

    int OnRemoteRequest(uint32_t, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &) override
    {
        data.ReadInterfaceToken();
        Json::Value call;
        std::string error;
        EXPECT_TRUE(ParseJson(ReadText(data), call, error)) << error;
        std::string answer = answer_(call);
        bool written = WriteText(reply, answer);
        return answer == "refuse" || written == answer.empty() ? -1 : 0;
    }

private:
    std::function<std::string(const Json::Value &)> answer_;
};

} // namespace DriveService

#endif // NUBIS_TESTS_CALLBACK_OBJECT_H
