// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_FUZZ_REPLY_OPERATIONS_H
#define NUBIS_FUZZ_REPLY_OPERATIONS_H

namespace Fuzz {
// Runs one operation of the library against the service of fuzz_kit.h and checks its outcome: the callback comes once,
// and the records that it brings are good. A letter that names none runs nothing.
void RunOperation(char letter);
} // namespace Fuzz

#endif // NUBIS_FUZZ_REPLY_OPERATIONS_H
