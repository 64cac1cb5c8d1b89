// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_DRIVE_SERVICE_STUB_H
#define NUBIS_SERVICE_DRIVE_SERVICE_STUB_H

#include <string>

#include "ipc_object_stub.h"
#include "requests/request_budget.h"
#include "requests/request_pool.h"
#include "requests/request_router.h"

namespace DriveService {

// The service's end of the IPC. A request parcel is
//
//   interface token | int32 length | the request text as raw data | what the function adds
//
// and the reply parcel of transaction 3
//
//   int32 result (0) | int32 length | the reply text as raw data
//
// What transaction 3 may add, and transaction 4 must, is the client's callback object. The reply parcel of transaction 4
// is empty; the answer comes by that object, with the request's "uuid", perhaps before the transaction has ended.
//
// A request beyond what the budget has for its client is not run.
//
// Called on IPC threads, several at once. Router and budget must live as long, and as long as the pool works.
class DriveServiceStub : public OHOS::IPCObjectStub {
public:
    // A request that is answered in its own transaction.
    static constexpr uint32_t TRANSACTION_SYNC = 3;
    // A request that is answered by the callback object.
    static constexpr uint32_t TRANSACTION_ASYNC = 4;

    explicit DriveServiceStub(
        RequestRouter &router, RequestPool &pool = RequestPool::Get(), RequestBudget &budget = RequestBudget::Get());

    // A wrong interface token gives ERR_INVALID_STATE, and a transaction other than those above
    // IPC_STUB_UNKNOW_TRANS_ERR. Transaction 4 gives ERR_INVALID_DATA for a text that is no JSON object with a "uuid",
    // ERR_NULL_OBJECT without a callback object, and ERR_TRANSACTION_FAILED when the pool or the budget takes no more. All
    // of them leave the reply empty and nothing is run.
    int OnRemoteRequest(
        uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option) override;

private:
    void AnswerAtOnce(OHOS::MessageParcel &data, OHOS::MessageParcel &reply);
    int AnswerLater(OHOS::MessageParcel &data);

    RequestRouter &router_;
    RequestPool &pool_;
    RequestBudget &budget_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_DRIVE_SERVICE_STUB_H
