// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_DRIVE_CALLBACK_STUB_H
#define NUBIS_DRIVE_CALLBACK_STUB_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include <json/value.h>

#include "drive_callback_ability.h"
#include "ffrt_inner.h"
#include "iremote_stub.h"
#include "nubis_kit.h"

namespace Nubis {
// The object that the service calls back: with the replies to asynchronous requests, and with requests of its own.
//
// The proxy of the user owns it and hands it to the service inside request parcels, so the service may hold it longer
// than the proxy lives. The service calls on IPC threads, several at once; callers wait on their own threads.
//
// A waiting request: AddRequest before it is sent, then either RemoveRequest, when sending failed, or WaitRequestReply,
// which returns when the reply is there, the time is over or the service is gone, and removes it. A reply that nobody
// waits for any more is dropped.
class DriveCallbackStub : public OHOS::IRemoteStub<DriveCallbackAbility> {
public:
    enum WaitStatus : int32_t {
        WAIT_REPLIED = 0,
        WAIT_TIMED_OUT = 1,
        WAIT_UNKNOWN = 2,
    };

    // The user whose kit serves what the service asks for.
    explicit DriveCallbackStub(int32_t userId);

    int OnRemoteRequest(
        uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option) override;
    // 0, with the reply filled, when the request was understood.
    int32_t HandleRemoteRequest(const std::string &requestText, std::string &reply);
    // Its two kinds, told apart by "uuid": the reply to an asynchronous request, and a request of the service's own.
    int32_t HandleRequestReply(const Json::Value &request, const std::string &requestText, std::string &reply);
    int32_t HandleRemoteRequestCallback(const Json::Value &request, const std::string &requestText, std::string &reply);

    // The request "onUploadRecordAssets": served by the kit's upload callback when that was set for this process, else
    // by the private database of the file container that the request names; -1 when the one or the other is missing.
    int32_t OnUploadRecordAssets(const Json::Value &request, std::string &reply);
    // The callback's result. While it runs, the progress of the request's task is delivered.
    static int32_t UploadByCallback(
        const NBUploadAssetCallback &callback, const Json::Value &request, std::string &reply);

    // A request of this uuid that is waiting already is forgotten.
    void AddRequest(const std::string &uuid);
    void RemoveRequest(const std::string &uuid);
    // Waits at most timeout seconds, without limit when that is below 1, and returns a WaitStatus.
    int32_t WaitRequestReply(const std::string &uuid, std::string &reply, int timeout);
    void SetRequestReplyResult(const std::string &uuid, const std::string &text);
    // Ends every request, also those that have not begun to wait: without a reply of its own it gets the text.
    void NotifyAllWaitRequest(const std::string &text);

private:
    using ReverseHandler = std::function<int32_t(const Json::Value &request, std::string &reply)>;
    struct WaitingRequest {
        std::shared_ptr<ffrt::promise<std::string>> reply;
        bool isWaitedFor = false;
        bool isReplied = false;
        // NotifyAllWaitRequest has passed; kept only until the caller comes to wait.
        bool isEnded = false;
    };

    const int32_t userId_;
    // By function name; constant after construction.
    std::map<std::string, ReverseHandler> reverseHandlers_;

    ffrt::mutex requestMutex_;
    std::map<std::string, WaitingRequest> waitingRequests_;
};
} // namespace Nubis

#endif // NUBIS_DRIVE_CALLBACK_STUB_H
