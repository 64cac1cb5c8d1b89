// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_DRIVE_SERVICE_STUB_H
#define NUBIS_SERVICE_DRIVE_SERVICE_STUB_H

#include <string>

#include "ipc_object_stub.h"
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
// Called on IPC threads, several at once. The router must live as long.
class DriveServiceStub : public OHOS::IPCObjectStub {
public:
    // A request that is answered in its own transaction.
    static constexpr uint32_t TRANSACTION_SYNC = 3;

    explicit DriveServiceStub(RequestRouter &router);

    // A wrong interface token gives ERR_INVALID_STATE, and a transaction other than those above
    // IPC_STUB_UNKNOW_TRANS_ERR; both leave the reply empty.
    int OnRemoteRequest(
        uint32_t code, OHOS::MessageParcel &data, OHOS::MessageParcel &reply, OHOS::MessageOption &option) override;

private:
    RequestRouter &router_;
};

} // namespace DriveService

#endif // NUBIS_SERVICE_DRIVE_SERVICE_STUB_H
