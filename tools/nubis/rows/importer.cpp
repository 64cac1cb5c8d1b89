// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "importer.h"

#include <deque>
#include <utility>

#include "error_text.h"
#include "interrupt.h"
#include "progress_bar.h"

namespace NubisTool {
namespace {

class Run {
public:
    Run(const std::vector<ImportItem> &items, const SendBatch &send, const ImportOptions &options,
        const Console &console)
        : items_(items), send_(send), options_(options), bar_(console, "importing", items.size())
    {}

    ImportReport Execute(const ImportPlan &plan)
    {
        auto start = std::chrono::steady_clock::now();
        for (const auto &wave : plan.waves) {
            for (const Batch &batch : wave) {
                Send(batch);
            }
            while (!underWay_.empty()) {
                TakeOldest();
            }
        }
        bar_.Finish();
        report_.interrupted = Interrupted();
        report_.time = std::chrono::steady_clock::now() - start;
        return std::move(report_);
    }

private:
    struct UnderWay {
        const Batch *batch;
        std::future<Async::RecordsResult> outcome;
    };

    void Send(const Batch &batch)
    {
        while (underWay_.size() >= options_.requestsInFlight) {
            TakeOldest();
        }
        if (unreachable_ || Interrupted()) {
            if (report_.notSent == 0) {
                report_.firstNotSent = &items_[batch.items.front()];
            }
            report_.notSent += batch.items.size();
            return;
        }
        std::vector<Nubis::NBRecord> records;
        records.reserve(batch.items.size());
        for (size_t index : batch.items) {
            records.push_back(items_[index].record);
        }
        ++report_.requests;
        report_.bytes += batch.bytes;
        underWay_.push_back({&batch, send_(std::move(records))});
    }

    void TakeOldest()
    {
        UnderWay oldest = std::move(underWay_.front());
        underWay_.pop_front();
        Async::RecordsResult outcome = Wait(std::move(oldest.outcome));
        unreachable_ = unreachable_ || IsTransportError(outcome.error);
        for (size_t index : oldest.batch->items) {
            Judge(items_[index], outcome);
        }
        answered_ += oldest.batch->items.size();
        bar_.Show(answered_);
    }

    void Judge(const ImportItem &item, const Async::RecordsResult &outcome)
    {
        std::string id = item.record.GetRecordId();
        Nubis::NBError error = ErrorFor(outcome, id);
        if (error.HasError()) {
            auto &failures = IsTransportError(error) ? report_.unanswered : report_.refusals;
            failures.push_back({item.file, item.line, std::move(id), std::move(error)});
            return;
        }
        ++report_.saved;
        if (options_.onSaved) {
            options_.onSaved(item.record, outcome.results.at(id).GetRecord());
        }
    }

    const std::vector<ImportItem> &items_;
    const SendBatch &send_;
    const ImportOptions &options_;
    ProgressBar bar_;
    ImportReport report_;
    std::deque<UnderWay> underWay_;
    size_t answered_ = 0;
    bool unreachable_ = false;
};

} // namespace

void GiveIds(Nubis::NBDatabase &database, std::vector<ImportItem> &items)
{
    std::vector<ImportItem *> nameless;
    for (ImportItem &item : items) {
        if (item.record.GetRecordId().empty()) {
            nameless.push_back(&item);
        }
    }
    std::vector<std::string> ids;
    ThrowIfError(database.GenerateIds(static_cast<int>(nameless.size()), ids), "making record ids");
    for (size_t i = 0; i < ids.size() && i < nameless.size(); ++i) {
        nameless[i]->record.SetRecordId(ids[i]);
    }
}

ImportReport RunImport(const std::vector<ImportItem> &items, const ImportPlan &plan, const SendBatch &send,
    const ImportOptions &options, const Console &console)
{
    return Run(items, send, options, console).Execute(plan);
}

} // namespace NubisTool
