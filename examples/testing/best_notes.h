// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef TESTING_BEST_NOTES_H
#define TESTING_BEST_NOTES_H

#include <memory>
#include <string>
#include <vector>

#include "nb_database.h"

// The code to be tested: the titles of the user's best notes, the best first. Throws std::system_error.
std::vector<std::string> BestNotes(const std::shared_ptr<Nubis::NBDatabase> &database, int count);

#endif // TESTING_BEST_NOTES_H
