// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SERVICE_UTIL_PARCEL_TEXT_H
#define NUBIS_SERVICE_UTIL_PARCEL_TEXT_H

#include <string>

#include "message_parcel.h"

namespace DriveService {

// Texts in parcels, both directions: int32 length | the text's bytes as raw data.

// Empty when there is none, or its length is not one that a text can have.
std::string ReadText(OHOS::MessageParcel &parcel);

// False for an empty text and for one above MAX_PARCEL_TEXT.
[[nodiscard]] bool WriteText(OHOS::MessageParcel &parcel, const std::string &text);

} // namespace DriveService

#endif // NUBIS_SERVICE_UTIL_PARCEL_TEXT_H
