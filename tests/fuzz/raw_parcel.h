// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_FUZZ_RAW_PARCEL_H
#define NUBIS_FUZZ_RAW_PARCEL_H

#include <string>

#include "message_parcel.h"

namespace Fuzz {
// A parcel as it comes from another process: any bytes.
class RawParcel : public OHOS::MessageParcel {
public:
    explicit RawParcel(const std::string &bytes)
    {
        LoadBytes(bytes.data(), bytes.size());
    }
};
} // namespace Fuzz

#endif // NUBIS_FUZZ_RAW_PARCEL_H
