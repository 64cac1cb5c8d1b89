// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef OHOS_NOCOPYABLE_H
#define OHOS_NOCOPYABLE_H

// NOLINTBEGIN(bugprone-macro-parentheses): the argument is the name of a class
#define DISALLOW_COPY(className)                                                                                       \
    className(const className &) = delete;                                                                             \
    className &operator=(const className &) = delete

#define DISALLOW_MOVE(className)                                                                                       \
    className(className &&) = delete;                                                                                  \
    className &operator=(className &&) = delete

// To be written once in the body of a class.
#define DISALLOW_COPY_AND_MOVE(className)                                                                              \
    DISALLOW_COPY(className);                                                                                          \
    DISALLOW_MOVE(className)
// NOLINTEND(bugprone-macro-parentheses)

#endif // OHOS_NOCOPYABLE_H
