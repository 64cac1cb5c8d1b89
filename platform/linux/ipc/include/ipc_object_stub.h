// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_IPC_OBJECT_STUB_H
#define OHOS_IPC_OBJECT_STUB_H

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "iremote_object.h"

namespace OHOS {

// The real object, in its own process. It stays alive while any sptr here or any proxy elsewhere refers to it; the last
// reference from elsewhere is dropped on an IPC thread.
class IPCObjectStub : public IRemoteObject {
public:
    // With `serialInvokeFlag` requests run one after another, otherwise several at once.
    explicit IPCObjectStub(std::u16string descriptor = std::u16string(), bool serialInvokeFlag = false);
    ~IPCObjectStub() override;

    bool IsProxyObject() const override;
    int32_t GetObjectRefCount() override;
    int SendRequest(uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option) override;
    bool AddDeathRecipient(const sptr<DeathRecipient> &recipient) override;
    bool RemoveDeathRecipient(const sptr<DeathRecipient> &recipient) override;
    int Dump(int fd, const std::vector<std::u16string> &args) override;

    // Handles one request, on an IPC thread when it comes from elsewhere. The result reaches a far caller only when
    // `reply` stays empty. This default answers IPC_STUB_UNKNOW_TRANS_ERR.
    virtual int OnRemoteRequest(uint32_t code, MessageParcel &data, MessageParcel &reply, MessageOption &option);

    // Whose request is being handled in this thread; this process itself outside of a far request.
    int GetCallingPid();
    int GetCallingUid();
    uint32_t GetCallingTokenID();

private:
    const bool serialInvokeFlag_;
    std::recursive_mutex serialMutex_;
};

} // namespace OHOS

#endif // OHOS_IPC_OBJECT_STUB_H
