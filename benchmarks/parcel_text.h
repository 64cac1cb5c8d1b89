// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_BENCH_PARCEL_TEXT_H
#define NUBIS_BENCH_PARCEL_TEXT_H

#include <cstdint>
#include <string>

#include "message_parcel.h"

// Texts in parcels, as library and service put them there.
namespace NubisBench {
inline void WriteText(OHOS::MessageParcel &parcel, const std::string &text)
{
    parcel.WriteInt32(static_cast<int32_t>(text.size()));
    parcel.WriteRawData(text.data(), text.size());
}

inline std::string ReadText(OHOS::MessageParcel &parcel)
{
    const auto size = static_cast<size_t>(parcel.ReadInt32());
    const auto *bytes = static_cast<const char *>(parcel.ReadRawData(size));
    return bytes == nullptr ? std::string() : std::string(bytes, size);
}
} // namespace NubisBench

#endif // NUBIS_BENCH_PARCEL_TEXT_H
