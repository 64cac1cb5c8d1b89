// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_EVENT_SPOOL_H
#define HOST_EVENT_SPOOL_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "unique_fd.h"

// What listeners and publishers of events do to folders and files:
//
//   <runtime>/<user>/events/<event>/<listener>/wake            connecting to it wakes the listener
//                                              <stamp>.event   a text, the smallest stamp first
//                                              <stamp>.gap     here texts are missing
//
// Names that begin with '.' are not finished yet.
namespace Host {

// The folder of the event name, made where it is missing; empty with a text in `error` when it cannot be had.
std::string PrepareEventFolder(int32_t userId, const std::string &eventName, std::string &error);

// Makes a folder for one listener and listens at its socket. Empty with a text in `error` when that fails.
Ipc::UniqueFd OpenSpool(const std::string &eventFolder, std::string &spool, std::string &error);
// Removes it with all texts in it.
void RemoveSpool(const std::string &spool);

// The folders of all listeners, dead ones too.
std::vector<std::string> FindSpools(const std::string &eventFolder);
// Leaves the text under the stamp and wakes the listener; the folder of a dead one is removed instead. False with a text
// in `error` when a living listener does not get the text.
bool PutIntoSpool(const std::string &spool, const std::string &stamp, const std::string &text, std::string &error);

// What was left for the listener: its file, to be read with TakeFromSpool.
std::vector<std::string> ListSpool(const std::string &spool);
enum class Taken {
    TEXT,
    GAP,
    // It is not there any more.
    NOTHING,
    // The system is short of something; it is still there.
    LATER,
};
// Takes one out of the spool.
Taken TakeFromSpool(const std::string &file, std::string &text);

} // namespace Host

#endif // HOST_EVENT_SPOOL_H
