// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Changes records from several threads until it has done its share, or until a call gets no answer, and tells on
// standard output what it is about to do and what was acknowledged:
//
//   begin THREAD ID=TITLE ID2= ...     a request leaves that saves ID and deletes ID2
//   done THREAD                        it was acknowledged
//   lost THREAD                        no answer came; the thread ends
//   subscribed THREAD ID               a subscription was acknowledged
//   wrong THREAD TEXT                  the service refused what it should have done
//
// load_client ROUND CLIENT SEED

#include <cstdlib>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>

#include "crash_note.h"
#include "nb_container.h"
#include "nb_context.h"
#include "nubis_kit.h"

using namespace Nubis;
using namespace NubisTest;

namespace {
constexpr int THREADS = 3;
constexpr int REQUESTS = 25;
constexpr uint32_t IDS = 6;

// Titles by record id; none for a record that is deleted.
using Changes = std::map<std::string, std::optional<std::string>>;

void Tell(const std::string &what, const std::string &thread, const std::string &text)
{
    const std::string line = what + " " + thread + " " + text + "\n";
    // One write, so that the threads' lines do not mix.
    if (write(STDOUT_FILENO, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        std::abort();
    }
}

class LoadThread {
public:
    LoadThread(std::shared_ptr<NBContainer> container, int64_t round, std::string name, uint32_t seed)
        : container_(std::move(container)), database_(container_->GetPrivateDatabase()), round_(round),
          name_(std::move(name)), random_(seed)
    {}

    void Run()
    {
        for (int i = 0; i < REQUESTS; ++i) {
            title_ = name_ + "v" + std::to_string(i);
            if (!Step()) {
                return;
            }
        }
    }

private:
    bool Step()
    {
        const std::string first = RandomId();
        const std::string second = RandomId();
        const std::string third = RandomId();
        switch (random_() % 8) {
            case 0:
                return Change({{first, title_}}, {});
            case 1:
                return Change({{first, title_}, {second, title_}, {third, title_}}, {});
            case 2:
            case 3:
                return Modify(first, second, third);
            case 4:
                return IsLive(first) ? Change({}, {first}) : Change({{first, title_}}, {});
            case 5:
                return IsLive(first) ? CopyOf(first) : Change({{first, title_}}, {});
            case 6:
                return SaveAsset(first);
            default:
                Subscribe();
                Page page = Query(database_, {"note", "stars=" + std::to_string(round_), {}});
                return Judge(page.error);
        }
    }

    std::string RandomId()
    {
        return name_ + "-" + std::to_string(random_() % IDS);
    }

    bool IsLive(const std::string &id) const
    {
        const auto found = state_.find(id);
        return found != state_.end() && found->second.has_value();
    }

    RecordBuilder RecordOf(const std::string &id) const
    {
        RecordBuilder record = Crash::NoteOf(id, title_, round_);
        return IsLive(id) ? record.Existing(0) : record;
    }

    std::vector<NBRecord> RecordsOf(const Changes &changes, bool isSaved) const
    {
        std::vector<NBRecord> records;
        for (const auto &[id, title] : changes) {
            if (title.has_value() == isSaved) {
                records.push_back(RecordOf(id));
            }
        }
        return records;
    }

    bool Modify(const std::string &first, const std::string &second, const std::string &third)
    {
        Changes changes{{first, title_}, {second, title_}};
        if (IsLive(third)) {
            changes[third] = std::nullopt;
        }
        Begin(changes);
        Modified modified = NubisTest::Modify(database_, RecordsOf(changes, true), RecordsOf(changes, false), true);
        modified.saved.insert(modified.deleted.begin(), modified.deleted.end());
        return Conclude(changes, modified.saved, modified.error);
    }

    bool Change(const Changes &saved, const std::vector<std::string> &deleted)
    {
        Changes changes = saved;
        for (const std::string &id : deleted) {
            changes[id] = std::nullopt;
        }
        Begin(changes);
        const Saved outcome =
            deleted.empty() ? Save(database_, RecordsOf(changes, true)) : Delete(database_, RecordsOf(changes, false));
        return Conclude(changes, outcome.results, outcome.error);
    }

    bool CopyOf(const std::string &source)
    {
        const std::string id = name_ + "-" + title_;
        const Changes changes{{id, title_}};
        Begin(changes);
        // The rest of the fields is the source's.
        const NBRecord order = Note(title_).Id(id).With("tags", Crash::TagsOf(title_));
        const Saved copied = Copy(database_, {{order, source}});
        return Conclude(changes, copied.results, copied.error);
    }

    // The service asks this process for the content before it answers.
    bool SaveAsset(const std::string &id)
    {
        NBAsset photo;
        photo.assetName = "p.jpg";
        photo.sha256 = title_;
        photo.size = 3;
        const Changes changes{{id, title_}};
        Begin(changes);
        const Saved saved = Save(database_, {RecordOf(id).With("photo", NBRecordField(photo))});
        return Conclude(changes, saved.results, saved.error);
    }

    void Subscribe()
    {
        constexpr int64_t farAway = 4102444800000; // the service shortens it to a year
        NBSubscription subscription{farAway};
        container_->SaveSubscription(std::make_shared<NBContext>(), subscription,
            [name = name_](auto, auto, const NBSubscriptionResult &result) {
                if (!result.error.HasError()) {
                    Tell("subscribed", name, result.id);
                }
            });
    }

    void Begin(const Changes &changes)
    {
        std::string text;
        for (const auto &[id, title] : changes) {
            text += id + "=" + title.value_or("") + " ";
        }
        Tell("begin", name_, text);
    }

    bool Judge(const NBError &error)
    {
        if (error.IsLocalError()) {
            Tell("lost", name_, std::to_string(error.GetLocalErrorCode()));
        } else if (error.HasError()) {
            Tell("wrong", name_, error.GetErrorMsg());
        }
        return !error.HasError();
    }

    bool Conclude(const Changes &changes, const NBResultMap &results, const NBError &error)
    {
        if (!Judge(error)) {
            return false;
        }
        for (const auto &[id, title] : changes) {
            const auto result = results.find(id);
            if (result == results.end()) {
                Tell("wrong", name_, "no result for " + id);
                return false;
            }
            if (!Judge(result->second)) {
                return false;
            }
            state_[id] = title;
        }
        Tell("done", name_, "");
        return true;
    }

    const std::shared_ptr<NBContainer> container_;
    const Database database_;
    const int64_t round_;
    const std::string name_;
    std::minstd_rand random_;
    Changes state_;
    std::string title_;
};

int AnswerUpload(const std::string &, std::string &reply)
{
    reply = R"({"code": 0, "records": []})";
    return 0;
}
} // namespace

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::cerr << "usage: load_client ROUND CLIENT SEED\n";
        return 2;
    }
    const auto kit = NubisNative::GetInstance(100, NB_SYNC_DEMON_DATA);
    kit->SetUploadAssetCallBack("load_client", AnswerUpload);
    const auto container = kit->GetDefaultContainer("com.example.notes");
    if (container == nullptr) {
        // The service was killed before this client knew the container.
        return 0;
    }
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        const std::string name = "r" + std::string(argv[1]) + "c" + argv[2] + "t" + std::to_string(i);
        const auto seed = static_cast<uint32_t>(std::strtoul(argv[3], nullptr, 10) + static_cast<unsigned>(i));
        threads.emplace_back([=] { LoadThread(container, std::strtol(argv[1], nullptr, 10), name, seed).Run(); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    return 0;
}
