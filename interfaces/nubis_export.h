// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_EXPORT_H
#define NUBIS_EXPORT_H

// The library is built with hidden visibility; what carries this macro is its public face.
#define NUBIS_EXPORT __attribute__((visibility("default")))

#endif // NUBIS_EXPORT_H
