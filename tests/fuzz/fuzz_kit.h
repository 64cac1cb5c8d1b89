// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_FUZZ_KIT_H
#define NUBIS_FUZZ_KIT_H

#include <memory>
#include <string>

#include "nb_container.h"
#include "nb_database.h"
#include "nubis_kit.h"

namespace Fuzz {
constexpr int USER = 100;
// The container that the kit knows from the beginning, with the record type "everything": a field of each type.
constexpr const char *BUNDLE = "com.example.fuzz";
constexpr const char *CONTAINER = "main";

// The kit of USER, made at the first call, and a drive service in this process that answers it. The service answers as
// a good one does while the kit is made and afterwards every request with the text that was given last.
const std::shared_ptr<Nubis::NubisNative> &Kit();
void AnswerWith(const std::string &text);

// Gives the answers of a good service, for as long as it lives.
class GoodService {
public:
    GoodService();
    ~GoodService();
    GoodService(const GoodService &) = delete;
    GoodService &operator=(const GoodService &) = delete;

private:
    const bool wasGood_;
};

const std::shared_ptr<Nubis::NBDatabase> &Database();
const Nubis::NBSchema &Schema();

// Ends the process when the record breaks what the library promises of records that it has read: fields of the types in
// the schema, which are the same when they are written and read again.
void CheckRecord(const Nubis::NBRecord &record);
} // namespace Fuzz

#endif // NUBIS_FUZZ_KIT_H
