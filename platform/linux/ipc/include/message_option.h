// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_MESSAGE_OPTION_H
#define OHOS_MESSAGE_OPTION_H

namespace OHOS {

// How a request is sent. A value without any lock: one thread at a time.
class MessageOption {
public:
    enum {
        TF_SYNC = 0x00,
        TF_ASYNC = 0x01,
        TF_STATUS_CODE = 0x08,
        TF_ACCEPT_FDS = 0x10,
        TF_WAIT_TIME = 0x8,
        TF_ASYNC_WAKEUP_LATER = 0x100000
    };

    // `waitTime` in seconds. Calls on this machine do not use it: a call ends with the reply or with the death of the far
    // process.
    MessageOption(int flags = TF_SYNC, int waitTime = TF_WAIT_TIME);

    // Adds to the present flags.
    void SetFlags(int flags);
    int GetFlags() const;
    // 0 or less gives 8, above 3000 gives 3000.
    void SetWaitTime(int waitTime);
    int GetWaitTime() const;

private:
    int flags_;
    int waitTime_ = TF_WAIT_TIME;
};

} // namespace OHOS

#endif // OHOS_MESSAGE_OPTION_H
