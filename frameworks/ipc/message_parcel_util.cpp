// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "message_parcel_util.h"

#include <cstdint>

#include "log.h"

namespace Nubis {
namespace {
constexpr int32_t MAX_STRING_LENGTH = 134217728;
}

void MessageParcelUtil::WriteStringToMessage(OHOS::MessageParcel &parcel, const std::string &text)
{
    parcel.WriteInt32(static_cast<int32_t>(text.size()));
    if (!parcel.WriteRawData(text.data(), text.size())) {
        NB_LOGE("save string failed, save raw failed, len:%{public}zu", text.size());
    }
}

std::string MessageParcelUtil::ReadStringFromMessage(OHOS::MessageParcel &parcel)
{
    const int32_t length = parcel.ReadInt32();
    if (length < 1 || length > MAX_STRING_LENGTH) {
        NB_LOGE("read string failed, len:%{public}d", length);
        return "";
    }
    const void *bytes = parcel.ReadRawData(static_cast<size_t>(length));
    if (bytes == nullptr) {
        NB_LOGE("read raw failed, buf is nullptr");
        return "";
    }
    return std::string(static_cast<const char *>(bytes), static_cast<size_t>(length));
}
} // namespace Nubis
