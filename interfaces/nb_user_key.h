// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_USER_KEY_H
#define NB_USER_KEY_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace Nubis {
/// The service keys of a private database, as the cloud side hands them out. A plain value; everything is zero or empty
/// where the service gave no key.
struct UserKey {
    ///@{
    /// In bytes. A longer key is cut off, a shorter one filled with zeros.
    static constexpr size_t EFEK_SIZE = 17;
    static constexpr size_t SFEK_SIZE = 33;
    ///@}
    /// The 32 characters of a key id and a terminating zero.
    static constexpr size_t UUID_SIZE = 33;

    /// The key of type 1.
    uint8_t efek[EFEK_SIZE] = {};
    /// The key of type 3.
    uint8_t sfek[SFEK_SIZE] = {};
    ///@{
    /// The ids of the two keys, terminated by a zero.
    char efekUuid[UUID_SIZE] = {};
    char sfekUuid[UUID_SIZE] = {};
    ///@}
    /// Always 0.
    int32_t reserved = 0;
    /// The user for whom the keys were fetched, as decimal text; empty when no complete set has been fetched.
    std::string userId;
};
} // namespace Nubis

#endif // NB_USER_KEY_H
