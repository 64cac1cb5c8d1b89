// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "message_option.h"

namespace OHOS {

namespace {
constexpr int MAX_WAIT_TIME = 3000;
}

MessageOption::MessageOption(int flags, int waitTime) : flags_(flags)
{
    SetWaitTime(waitTime);
}

void MessageOption::SetFlags(int flags)
{
    flags_ |= flags;
}

int MessageOption::GetFlags() const
{
    return flags_;
}

void MessageOption::SetWaitTime(int waitTime)
{
    if (waitTime <= 0) {
        waitTime_ = TF_WAIT_TIME;
    } else if (waitTime > MAX_WAIT_TIME) {
        waitTime_ = MAX_WAIT_TIME;
    } else {
        waitTime_ = waitTime;
    }
}

int MessageOption::GetWaitTime() const
{
    return waitTime_;
}

} // namespace OHOS
