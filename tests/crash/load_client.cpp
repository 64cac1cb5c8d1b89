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
#include <set>
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
                return SaveNotes({first});
            case 1:
                return SaveNotes({first, second, third});
            case 2:
            case 3:
                return ModifyNotes(first, second, third);
            case 4:
                return IsLive(first) ? DeleteNote(first) : SaveNotes({first});
            case 5:
                return IsLive(first) ? CopyNote(first) : SaveNotes({first});
            case 6:
                return SaveAsset(first);
            default:
                Subscribe();
                return Judge(Query(database_, {"note", "stars=" + std::to_string(round_), {}}).error);
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

    bool SaveNotes(const std::set<std::string> &ids)
    {
        Changes changes;
        std::vector<NBRecord> records;
        for (const std::string &id : ids) {
            changes[id] = title_;
            records.push_back(RecordOf(id));
        }
        return Change(changes, [&] { return Save(database_, records); });
    }

    bool DeleteNote(const std::string &id)
    {
        return Change({{id, std::nullopt}}, [&] { return Delete(database_, {RecordOf(id)}); });
    }

    // All of it or nothing; the last one is deleted if it is there.
    bool ModifyNotes(const std::string &first, const std::string &second, const std::string &last)
    {
        Changes changes{{first, title_}, {second, title_}};
        std::vector<NBRecord> saved;
        std::vector<NBRecord> deleted;
        for (const auto &[id, title] : changes) {
            saved.push_back(RecordOf(id));
        }
        if (IsLive(last) && changes.emplace(last, std::nullopt).second) {
            deleted.push_back(RecordOf(last));
        }
        return Change(changes, [&] {
            Async::ModifyResult modified = Modify(database_, saved, deleted, true);
            modified.saved.merge(modified.deleted);
            return Async::RecordsResult{std::move(modified.saved), std::move(modified.error)};
        });
    }

    bool CopyNote(const std::string &source)
    {
        const std::string id = name_ + "-" + title_;
        // The rest of the fields is the source's.
        const NBRecord order = Note(title_).Id(id).With("tags", Crash::TagsOf(title_));
        return Change({{id, title_}}, [&] { return Copy(database_, {{order, source}}); });
    }

    // The service asks this process for the content before it answers.
    bool SaveAsset(const std::string &id)
    {
        NBAsset photo;
        photo.assetName = "p.jpg";
        photo.sha256 = title_;
        photo.size = 3;
        return Change(
            {{id, title_}}, [&] { return Save(database_, {RecordOf(id).With("photo", NBRecordField(photo))}); });
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

    bool Judge(const NBError &error)
    {
        if (error.GetLocalErrorCode() == NB_LOCAL_UNEXPECTED_REPLY) {
            Tell("wrong", name_, "a record has no result");
        } else if (error.IsLocalError()) {
            Tell("lost", name_, std::to_string(error.GetLocalErrorCode()));
        } else if (error.HasError()) {
            Tell("wrong", name_, error.GetErrorMsg());
        }
        return !error.HasError();
    }

    template <typename Call>
    bool Change(const Changes &changes, const Call &call)
    {
        std::string text;
        for (const auto &[id, title] : changes) {
            text += id + "=" + title.value_or("") + " ";
        }
        Tell("begin", name_, text);
        const Async::RecordsResult outcome = call();
        if (!Judge(outcome.error)) {
            return false;
        }
        for (const auto &[id, title] : changes) {
            const auto result = outcome.results.find(id);
            const bool isMissing = result == outcome.results.end();
            if (!Judge(isMissing ? NBError(NB_LOCAL_UNEXPECTED_REPLY) : static_cast<NBError>(result->second))) {
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
