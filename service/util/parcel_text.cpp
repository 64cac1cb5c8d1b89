// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "util/parcel_text.h"

#include "records/limits.h"

namespace DriveService {

std::string ReadText(OHOS::MessageParcel &parcel)
{
    int32_t length = parcel.ReadInt32();
    if (length < 1 || static_cast<size_t>(length) > MAX_PARCEL_TEXT) {
        return "";
    }
    const void *bytes = parcel.ReadRawData(static_cast<size_t>(length));
    return bytes == nullptr ? "" : std::string(static_cast<const char *>(bytes), static_cast<size_t>(length));
}

bool WriteText(OHOS::MessageParcel &parcel, const std::string &text)
{
    return text.size() <= MAX_PARCEL_TEXT && parcel.WriteInt32(static_cast<int32_t>(text.size())) &&
           parcel.WriteRawData(text.data(), text.size());
}

} // namespace DriveService
