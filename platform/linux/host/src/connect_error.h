// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_CONNECT_ERROR_H
#define HOST_CONNECT_ERROR_H

#include <string>

namespace Host {

// What LastConnectError tells from now on.
void SetLastConnectError(const std::string &text);

} // namespace Host

#endif // HOST_CONNECT_ERROR_H
