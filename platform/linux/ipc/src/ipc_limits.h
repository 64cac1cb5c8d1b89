// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_IPC_LIMITS_H
#define HOST_IPC_LIMITS_H

#include <cstddef>

// What one process may take of another one. Each is far above what honest processes need, and ends or refuses only what
// the one that is above it does.
namespace Host::Ipc {

// The largest message that is accepted (bytes): a block of 128 MiB and as much again for values and objects. A parcel is
// a little less, for the frame around it.
constexpr size_t MAX_MESSAGE_BYTES = size_t{256} * 1024 * 1024;
constexpr size_t MAX_PARCEL_BYTES = size_t{250} * 1024 * 1024;

// Objects in a parcel, file descriptors that come with a message, bytes of the names in it.
constexpr size_t MAX_OBJECTS = 4096;
constexpr size_t MAX_DESCRIPTORS = 64;
constexpr size_t MAX_DESCRIPTOR_TEXT = 1024;
constexpr size_t MAX_KEY_SIZE = 64;
constexpr size_t MAX_NAME_SIZE = 1024;

// Requests of a connection that are being handled; the next one fails.
constexpr size_t MAX_CALLS_UNDER_WAY = 1024;

// What a client may leave unread on a connection, in bytes and messages, and what of large replies it may leave unfetched
// in a session. One that sends more nevertheless is cut off.
constexpr size_t MAX_UNREAD_BYTES = size_t{512} * 1024 * 1024;
constexpr size_t MAX_UNREAD_MESSAGES = 16384;

// Connections that have not said what they want, of all processes and of one; the oldest is closed for a new one.
constexpr size_t MAX_NEWCOMERS = 256;
constexpr size_t MAX_NEWCOMERS_OF_PROCESS = 32;

// Sessions of a service, and those of one process; the next one is refused.
constexpr size_t MAX_SESSIONS = 1024;
constexpr size_t MAX_SESSIONS_OF_PROCESS = 64;

// Threads that run handlers and notices; what comes when all are busy waits for one of them.
constexpr size_t MAX_WORKERS = 4096;

} // namespace Host::Ipc

#endif // HOST_IPC_LIMITS_H
