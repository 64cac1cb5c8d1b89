// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NUBIS_SIMULATION_RECORD_MODEL_H
#define NUBIS_SIMULATION_RECORD_MODEL_H

#include <cstdint>
#include <limits>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Simulation {

// What the records of one database may be, from what was ordered and what became of it: an acknowledged change has
// happened between its order and its acknowledgement, a refused one has not, and one whose reply was lost may have. Any
// thread.
class RecordModel {
public:
    // No title: the record is erased.
    struct Change {
        std::string recordId;
        std::optional<std::string> title;
    };
    enum class Outcome {
        OPEN,
        DONE,
        REFUSED,
        UNKNOWN,
    };
    using Contents = std::map<std::string, std::string>;

    // The changes of one request; those of an atomic one happen all or not at all. Returns the number of the first, the
    // others follow.
    size_t Order(const std::vector<Change> &changes, bool isWhole);
    void Settle(size_t change, Outcome outcome);
    // Nothing is under way any more, so that what is unknown happens now no more.
    void OnQuiet();

    // What cannot be, in words; empty when the contents, titles by record id, can be explained.
    std::string Explain(const Contents &contents);

private:
    static constexpr uint64_t NEVER = std::numeric_limits<uint64_t>::max();
    struct Entry {
        Change change;
        size_t request = 0;
        bool isWhole = false;
        uint64_t begin = 0;
        uint64_t end = NEVER;
        Outcome outcome = Outcome::OPEN;
    };

    // With the mutex held.
    void BelieveWholeRequests(const Contents &contents);
    bool CanBe(const std::string &recordId, const std::optional<std::string> &title) const;
    bool IsOverwritten(const std::string &recordId, uint64_t end) const;

    std::mutex mutex_;
    uint64_t now_ = 0;
    size_t requests_ = 0;
    std::vector<Entry> entries_;
};

} // namespace Simulation

#endif // NUBIS_SIMULATION_RECORD_MODEL_H
