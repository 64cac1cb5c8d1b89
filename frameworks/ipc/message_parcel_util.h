// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_MESSAGE_PARCEL_UTIL_H
#define NUBIS_MESSAGE_PARCEL_UTIL_H

#include <cstddef>
#include <memory>
#include <string>

#include "message_parcel.h"

namespace Nubis {
// Texts in parcels, both directions:
//
//   int32   length of the text in bytes, 1 to 128 MiB
//   block   the bytes, as raw data of the parcel (which writes its own int32 size before them); no terminator
//
// A parcel carries at most one block above 32 KiB, so never two long texts.
class MessageParcelUtil {
public:
    // A text that does not fit is logged; its length is in the parcel all the same, and reads back as an empty text.
    static void WriteStringToMessage(OHOS::MessageParcel &parcel, const std::string &text);
    // Empty when there is no readable text.
    static std::string ReadStringFromMessage(OHOS::MessageParcel &parcel);
};
} // namespace Nubis

#endif // NUBIS_MESSAGE_PARCEL_UTIL_H
