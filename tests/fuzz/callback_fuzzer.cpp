// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "drive_callback_stub.h"
#include "fuzz_kit.h"
#include "fuzz_target.h"
#include "json_helper.h"
#include "message_option.h"
#include "message_parcel_util.h"
#include "process_helper.h"
#include "raw_parcel.h"

using Nubis::DriveCallbackStub;
using Nubis::JsonHelper;

namespace {
constexpr const char *WAITING = "u1";

int Send(const OHOS::sptr<DriveCallbackStub> &stub, OHOS::MessageParcel &data)
{
    OHOS::MessageParcel reply;
    OHOS::MessageOption option;
    const int result = stub->OnRemoteRequest(1, data, reply, option);
    FUZZ_CHECK(result == 0 || reply.GetDataSize() == 0);
    return result;
}

// A text that is the reply to a waiting request reaches who waits, as it is; any other reaches nobody.
void CheckText(const OHOS::sptr<DriveCallbackStub> &stub, const std::string &text)
{
    OHOS::MessageParcel data;
    data.WriteInterfaceToken(DriveCallbackStub::GetDescriptor());
    Nubis::MessageParcelUtil::WriteStringToMessage(data, text);
    // Never the text itself, which the fuzzer may find to be any.
    const std::string nobody = text + "nobody replied";
    stub->AddRequest(WAITING);
    const int result = Send(stub, data);
    stub->NotifyAllWaitRequest(nobody);
    std::string reply;
    FUZZ_CHECK(stub->WaitRequestReply(WAITING, reply, 0) == DriveCallbackStub::WAIT_REPLIED);
    FUZZ_CHECK(reply == text || reply == nobody);
    FUZZ_CHECK(reply != text || result == 0);
}
} // namespace

// The first byte tells who serves uploads, and whether the rest is a parcel, a parcel behind its token, or a text.
void Fuzz::TestOne(const std::string &input)
{
    static const OHOS::sptr<DriveCallbackStub> stub = new DriveCallbackStub(USER);
    const std::string body = Body(input);
    const auto answer = [](const std::string &request, std::string &reply) {
        FUZZ_CHECK(JsonHelper::StringToJson(request).isObject());
        reply = request;
        return 0;
    };
    AnswerWith(body);
    Kit()->SetUploadAssetCallBack((Selector(input) & 4) == 0 ? "" : Nubis::ProcessHelper::GetCurProcessName(), answer);
    RawParcel parcel(body);
    OHOS::MessageParcel behindToken;
    switch (Selector(input) & 3) {
        case 0:
            Send(stub, parcel);
            break;
        case 1:
            behindToken.WriteInterfaceToken(DriveCallbackStub::GetDescriptor());
            behindToken.WriteUnpadBuffer(body.data(), body.size());
            Send(stub, behindToken);
            break;
        default:
            CheckText(stub, body);
            break;
    }
}
