// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef HOST_EVENT_FILE_H
#define HOST_EVENT_FILE_H

#include <string>

namespace Host {

// Adds a line, which ends in a newline, to the file of an instance's events; false when it is not in it as a whole.
// One that would make the file larger than MAX_EVENT_LOG_BYTES begins a new file, and the full one takes the place of
// the old one before it. Lines of several threads and processes stay whole, also behind one that a full disk, or the
// end of its process, has cut. Any thread.
bool AppendEventLine(const std::string &instanceTag, const std::string &line);

} // namespace Host

#endif // HOST_EVENT_FILE_H
