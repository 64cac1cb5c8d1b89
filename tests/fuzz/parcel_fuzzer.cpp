// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "ability_connect_callback_stub.h"
#include "application_info.h"
#include "bundle_mgr_service.h"
#include "fuzz_target.h"
#include "message_option.h"
#include "raw_parcel.h"
#include "string_ex.h"

namespace {
// Reads one value of the kind that the byte names; false when there is none.
bool ReadOne(OHOS::MessageParcel &parcel, uint8_t kind)
{
    const size_t size = kind >> 4;
    int64_t number = 0;
    std::string text;
    std::u16string wide;
    switch (kind & 7) {
        case 0:
            return parcel.ReadInt64(number);
        case 1:
            return parcel.ReadString(text);
        case 2:
            return parcel.ReadString16(wide);
        case 3:
            // An empty name cannot be told from none.
            parcel.ReadInterfaceToken();
            return true;
        case 4:
            return parcel.ReadBuffer(size) != nullptr;
        case 5:
            return parcel.ReadUnpadBuffer(size) != nullptr;
        case 6:
            // Neither travels among the values, so none can be in these.
            FUZZ_CHECK(parcel.ReadRemoteObject() == nullptr && parcel.ReadFileDescriptor() == -1);
            return false;
        default:
            return parcel.ReadRawData(size) != nullptr && parcel.GetRawDataSize() == size;
    }
}

void ReadValues(const std::string &kinds, const std::string &bytes)
{
    Fuzz::RawParcel parcel(bytes);
    for (const char kind : kinds) {
        const size_t before = parcel.GetReadPosition();
        const bool read = ReadOne(parcel, static_cast<uint8_t>(kind));
        const size_t after = parcel.GetReadPosition();
        FUZZ_CHECK(after + parcel.GetReadableBytes() == bytes.size() && after >= before);
        // Raw data without its bytes leaves the position behind its size.
        FUZZ_CHECK(read || after == before || (kind & 7) == 7);
    }
}

// An application info that can be read is the same when it is written and read again.
void ReadApplicationInfo(const std::string &bytes)
{
    Fuzz::RawParcel parcel(bytes);
    OHOS::AppExecFwk::ApplicationInfo info;
    info.name = "untouched";
    if (!info.ReadFromParcel(parcel)) {
        FUZZ_CHECK(info.name == "untouched");
        return;
    }
    OHOS::MessageParcel written;
    FUZZ_CHECK(info.Marshalling(written));
    OHOS::AppExecFwk::ApplicationInfo again;
    FUZZ_CHECK(again.ReadFromParcel(written) && written.GetReadableBytes() == 0);
    FUZZ_CHECK(again.moduleInfos.size() == info.moduleInfos.size() && again.metaData.size() == info.metaData.size());
}

// Hears of a lost connection only with the name of whom it was to; no object can be among these values.
class Connection : public OHOS::AAFwk::AbilityConnectionStub {
public:
    void OnAbilityConnectDone(
        const OHOS::AppExecFwk::ElementName &, const OHOS::sptr<OHOS::IRemoteObject> &, int) override
    {
        FUZZ_CHECK(false);
    }
    void OnAbilityDisconnectDone(const OHOS::AppExecFwk::ElementName &, int) override
    {
        ++disconnects;
    }

    int disconnects = 0;
};

void TellConnection(const std::string &bytes)
{
    const OHOS::sptr<Connection> connection = new Connection;
    int told = 0;
    for (uint32_t code = 0; code < 4; ++code) {
        OHOS::MessageParcel data;
        OHOS::MessageParcel reply;
        OHOS::MessageOption option;
        data.WriteInterfaceToken(Connection::GetDescriptor());
        data.WriteUnpadBuffer(bytes.data(), bytes.size());
        told += connection->OnRemoteRequest(code, data, reply, option) == 0 ? 1 : 0;
    }
    FUZZ_CHECK(told == connection->disconnects && told <= 1);
}

void AskBundleManager(const std::string &bytes)
{
    static const auto *service =
        new OHOS::sptr<OHOS::AppExecFwk::BundleMgrService>(new OHOS::AppExecFwk::BundleMgrService);
    OHOS::MessageParcel data;
    OHOS::MessageParcel reply;
    OHOS::MessageOption option;
    data.WriteInterfaceToken((*service)->GetDescriptor());
    data.WriteUnpadBuffer(bytes.data(), bytes.size());
    // Nothing is installed.
    if ((*service)->OnRemoteRequest(1, data, reply, option) == 0) {
        FUZZ_CHECK(reply.ReadInt32() != 0);
    }
}
} // namespace

void Fuzz::TestOne(const std::string &input)
{
    const std::string body = Body(input);
    const auto kinds = static_cast<size_t>(static_cast<uint8_t>(Selector(input)));
    ReadValues(body.substr(0, kinds), body.size() > kinds ? body.substr(kinds) : "");
    ReadApplicationInfo(body);
    TellConnection(body);
    AskBundleManager(body);
    // What is no UTF-8 has no form in 16 bits; every other text has one, which leads back to it.
    const std::u16string wide = OHOS::Str8ToStr16(body);
    FUZZ_CHECK(wide.empty() || OHOS::Str16ToStr8(wide) == body);
}
