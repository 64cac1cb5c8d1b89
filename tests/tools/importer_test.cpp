// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "importer.h"

#include <csignal>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "interrupt.h"
#include "progress_bar.h"

namespace NubisTool {
namespace {
using namespace Nubis;

// A service in place of the database: it answers when it is asked to.
class FakeService {
public:
    SendBatch Sender()
    {
        return [this](std::vector<NBRecord> records) {
            // The oldest must have been answered before more than four are under way.
            EXPECT_LT(underWay_.size(), 4U) << "more than four requests at once";
            sizes.push_back(records.size());
            auto promise = std::make_shared<std::promise<Async::RecordsResult>>();
            underWay_.push_back({promise, std::move(records)});
            if (underWay_.size() >= 4) {
                AnswerAll();
            }
            return promise->get_future();
        };
    }

    void AnswerAll()
    {
        for (auto &[promise, records] : underWay_) {
            Async::RecordsResult outcome;
            if (dropped) {
                promise.reset();
                continue;
            }
            outcome.error.SetLocalError(unreachable ? NB_LOCAL_NOT_CONNECTED : NB_LOCAL_SUCCESS);
            for (NBRecord &record : records) {
                NBError error = outcome.error;
                if (record.GetRecordId() == refused) {
                    error.SetServerError(1102);
                }
                record.SetVersion(7);
                if (record.GetRecordId() != unanswered) {
                    outcome.results.emplace(record.GetRecordId(), NBRecordOperResult(error, record));
                }
            }
            promise->set_value(std::move(outcome));
        }
        underWay_.clear();
    }

    std::vector<size_t> sizes;
    std::string refused;
    std::string unanswered;
    bool unreachable = false;
    bool dropped = false;

private:
    struct Request {
        std::shared_ptr<std::promise<Async::RecordsResult>> promise;
        std::vector<NBRecord> records;
    };
    std::vector<Request> underWay_;
};

class ImporterTest : public testing::Test {
protected:
    ImportReport Run(size_t count, size_t perRequest)
    {
        for (size_t i = 0; i < count; ++i) {
            ImportItem item;
            item.file = "in";
            item.line = i + 1;
            item.record.SetRecordId("r" + std::to_string(i));
            items_.push_back(item);
        }
        std::vector<RowProblem> problems;
        ImportPlan plan = PlanImport(items_, {perRequest, 1000000}, problems);
        ImportOptions options;
        options.onSaved = [this](const NBRecord &sent, const NBRecord &answered) {
            EXPECT_EQ(sent.GetRecordId(), answered.GetRecordId());
            EXPECT_EQ(answered.GetVersion(), 7U);
            ++told_;
        };
        Console console{in_, out_, err_, false};
        return RunImport(items_, plan, service_.Sender(), options, console);
    }

    FakeService service_;
    std::vector<ImportItem> items_;
    size_t told_ = 0;
    std::istringstream in_;
    std::ostringstream out_;
    std::ostringstream err_;
};

TEST_F(ImporterTest, SendsAllBatchesWithSeveralUnderWay)
{
    ImportReport report = Run(40, 10);
    EXPECT_EQ(report.saved, 40U);
    EXPECT_EQ(told_, 40U);
    EXPECT_EQ(report.requests, 4U);
    EXPECT_THAT(service_.sizes, testing::Each(10U));
    EXPECT_TRUE(report.refusals.empty());
    EXPECT_TRUE(err_.str().empty());
}

TEST_F(ImporterTest, NamesRefusedAndUnansweredRecordsAndKeepsTheOthers)
{
    service_.refused = "r3";
    service_.unanswered = "r15";
    ImportReport report = Run(40, 10);
    EXPECT_EQ(report.saved, 38U);
    ASSERT_EQ(report.refusals.size(), 2U);
    EXPECT_EQ(report.refusals[0].recordId, "r3");
    EXPECT_EQ(report.refusals[0].line, 4U);
    EXPECT_EQ(report.refusals[0].error.GetServerErrorCode(), 1102);
    EXPECT_EQ(report.refusals[1].recordId, "r15");
    EXPECT_EQ(report.refusals[1].error.GetLocalErrorCode(), NB_LOCAL_UNEXPECTED_REPLY);
}

TEST_F(ImporterTest, EndsEarlyWhenTheServiceIsGoneOrNeverAnswers)
{
    service_.unreachable = true;
    ImportReport report = Run(100, 10);
    EXPECT_EQ(report.saved, 0U);
    EXPECT_TRUE(report.refusals.empty());
    EXPECT_EQ(report.unanswered.size(), 40U);
    EXPECT_EQ(report.notSent, 60U);
    ASSERT_NE(report.firstNotSent, nullptr);
    EXPECT_EQ(report.firstNotSent->line, 41U);

    items_.clear();
    service_.unreachable = false;
    service_.dropped = true;
    report = Run(100, 10);
    EXPECT_EQ(report.saved, 0U);
    EXPECT_EQ(report.notSent, 60U);
    EXPECT_EQ(report.unanswered.front().error.GetLocalErrorCode(), NB_LOCAL_IPC_FAILED);
}

TEST_F(ImporterTest, AnInterruptEndsItAfterWhatIsUnderWay)
{
    auto previous = std::signal(SIGHUP, SIG_DFL);
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        InterruptGuard guard;
        raise(signal);
        items_.clear();
        ImportReport report = Run(20, 10);
        EXPECT_TRUE(report.interrupted);
        EXPECT_EQ(report.notSent, 20U);
        EXPECT_TRUE(service_.sizes.empty());
    }
    // As nohup leaves it: the end of the terminal is no interrupt.
    std::signal(SIGHUP, SIG_IGN);
    {
        InterruptGuard guard;
        raise(SIGHUP);
        EXPECT_FALSE(Interrupted());
    }
    std::signal(SIGHUP, previous);
}

TEST_F(ImporterTest, TheProgressBarIsForTerminalsAndLongWorkOnly)
{
    auto start = ProgressBar::Clock::now();
    auto later = [start](int milliseconds) { return start + std::chrono::milliseconds(milliseconds); };
    Console pipe{in_, out_, err_, false};
    ProgressBar(pipe, "importing", 10, start).Show(5, later(5000));
    EXPECT_EQ(err_.str(), "");

    Console terminal{in_, out_, err_, true};
    {
        ProgressBar bar(terminal, "importing", 10, start);
        bar.Show(3, later(900));
        EXPECT_EQ(err_.str(), "");
        bar.Show(5, later(2000));
        EXPECT_THAT(err_.str(), testing::HasSubstr("importing [###############...............] 5/10  2/s  0:02 left"));
        size_t drawn = err_.str().size();
        bar.Show(6, later(2050));
        EXPECT_EQ(err_.str().size(), drawn);
    }
    EXPECT_THAT(err_.str(), testing::EndsWith("\r\033[K"));
}
} // namespace
} // namespace NubisTool
