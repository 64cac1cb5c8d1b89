// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "import_plan.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "record_json.h"

namespace NubisTool {
namespace {

using RecordKey = std::pair<std::string, std::string>;

void AddReferences(const Nubis::NBRecordField &field, std::vector<RecordKey> &references)
{
    if (Nubis::NBReference reference; field.GetReference(reference) == Nubis::NB_LOCAL_SUCCESS) {
        references.emplace_back(reference.recordType, reference.recordId);
    } else if (Nubis::NBFieldList list; field.GetRecordList(list) == Nubis::NB_LOCAL_SUCCESS) {
        for (const Nubis::NBRecordField &element : list) {
            AddReferences(element, references);
        }
    }
}

std::vector<RecordKey> ReferencesOf(const Nubis::NBRecord &record)
{
    Nubis::NBFieldMap data;
    record.GetRecordData(data);
    std::vector<RecordKey> references;
    for (const auto &[name, field] : data) {
        AddReferences(field, references);
    }
    return references;
}

// Who waits for whom among the items; references to records outside the import are the service's to check.
struct Dependencies {
    explicit Dependencies(const std::vector<ImportItem> &items) : dependents(items.size()), open(items.size(), 0)
    {
        std::map<RecordKey, size_t> indexOf;
        for (size_t i = 0; i < items.size(); ++i) {
            indexOf.emplace(RecordKey(items[i].record.GetRecordType(), items[i].record.GetRecordId()), i);
        }
        for (size_t i = 0; i < items.size(); ++i) {
            for (const RecordKey &reference : ReferencesOf(items[i].record)) {
                auto target = indexOf.find(reference);
                if (target != indexOf.end()) {
                    dependents[target->second].push_back(i);
                    ++open[i];
                }
            }
        }
    }

    std::vector<std::vector<size_t>> dependents;
    std::vector<size_t> open;
};

std::vector<std::vector<size_t>> SplitIntoWaves(const std::vector<ImportItem> &items, std::vector<RowProblem> &problems)
{
    Dependencies dependencies(items);
    std::vector<size_t> ready;
    for (size_t i = 0; i < items.size(); ++i) {
        if (dependencies.open[i] == 0) {
            ready.push_back(i);
        }
    }
    std::vector<std::vector<size_t>> waves;
    while (!ready.empty()) {
        std::vector<size_t> next;
        for (size_t item : ready) {
            for (size_t dependent : dependencies.dependents[item]) {
                if (--dependencies.open[dependent] == 0) {
                    next.push_back(dependent);
                }
            }
        }
        // Within a wave the records keep the order of the input.
        std::sort(next.begin(), next.end());
        waves.push_back(std::move(ready));
        ready = std::move(next);
    }
    for (size_t i = 0; i < items.size(); ++i) {
        if (dependencies.open[i] != 0) {
            problems.push_back({items[i].file, items[i].line, "", "references that end somewhere",
                "records that refer to each other in a circle, or to such records"});
        }
    }
    return waves;
}

std::vector<Batch> SplitIntoBatches(
    const std::vector<size_t> &wave, const std::vector<size_t> &sizes, size_t maxRecords, size_t maxBytes)
{
    std::vector<Batch> batches;
    for (size_t item : wave) {
        bool fits = !batches.empty() && batches.back().items.size() < maxRecords &&
                    batches.back().bytes + sizes[item] <= maxBytes;
        if (!fits) {
            batches.emplace_back();
        }
        batches.back().items.push_back(item);
        batches.back().bytes += sizes[item];
    }
    return batches;
}

} // namespace

ImportPlan PlanImport(
    const std::vector<ImportItem> &items, const BatchLimits &limits, std::vector<RowProblem> &problems)
{
    size_t maxBytes = limits.maxBytes > ENVELOPE_BYTES ? limits.maxBytes - ENVELOPE_BYTES : 1;
    size_t maxRecords = std::max<size_t>(limits.maxRecords, 1);
    ImportPlan plan;
    std::vector<size_t> sizes;
    sizes.reserve(items.size());
    // As the library writes requests: compact, and not only ASCII characters escaped, which takes the most room.
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    for (const ImportItem &item : items) {
        size_t size = Json::writeString(builder, item.record.ToJsonValue()).size() + 1;
        if (size > maxBytes) {
            problems.push_back({item.file, item.line, "", "a record of at most " + std::to_string(maxBytes) + " bytes",
                std::to_string(size) + " bytes"});
        }
        sizes.push_back(size);
        plan.bytes += size;
    }
    for (const auto &wave : SplitIntoWaves(items, problems)) {
        plan.waves.push_back(SplitIntoBatches(wave, sizes, maxRecords, maxBytes));
    }
    return plan;
}

} // namespace NubisTool
