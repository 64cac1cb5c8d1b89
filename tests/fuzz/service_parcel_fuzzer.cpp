// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_service_stub.h"
#include "fuzz_target.h"
#include "message_option.h"
#include "raw_parcel.h"
#include "service_instance.h"
#include "util/parcel_text.h"

namespace {
using namespace DriveService;

// Of a service without any bundle, which so has nothing to change.
DriveServiceStub &Stub()
{
    static auto *instance = new ServiceInstance(Fuzz::Folder() + "/service", 100, SystemNowMs);
    static const auto *stub = new OHOS::sptr<DriveServiceStub>(new DriveServiceStub(instance->Router()));
    return **stub;
}
} // namespace

// The first byte tells the transaction and whether a token stands before the rest.
void Fuzz::TestOne(const std::string &input)
{
    const std::string body = Body(input);
    RawParcel raw(body);
    OHOS::MessageParcel behindToken;
    behindToken.WriteInterfaceToken(u"OHOS.Aerostash.DriveServiceAbility");
    behindToken.WriteUnpadBuffer(body.data(), body.size());
    const bool isRaw = (Selector(input) & 8) != 0;
    OHOS::MessageParcel reply;
    OHOS::MessageOption option;
    const auto code = static_cast<uint32_t>(Selector(input) & 7);
    const int result = Stub().OnRemoteRequest(code, isRaw ? raw : behindToken, reply, option);
    if (code == DriveServiceStub::TRANSACTION_SYNC && result == 0) {
        // Whatever was asked, there is an answer.
        FUZZ_CHECK(reply.ReadInt32() == 0 && !ReadText(reply).empty());
    } else {
        FUZZ_CHECK(code != DriveServiceStub::TRANSACTION_ASYNC || reply.GetDataSize() == 0);
    }
}
