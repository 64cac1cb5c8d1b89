// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

// Is woken when notes change, and reads what has changed, until as many notifications have come as the argument says
// (0: without end):
//
//   nubis service exec --catalogue examples/notes.json -- bash examples/subscriber_try subscriber
//
// On a device the system delivers notifications; the event channel is how they come on Linux. All else is the same.

#include <chrono>
#include <exception>
#include <future>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include <json/json.h>

#include "host/event_channel.h"
#include "nubis_async.h"

using namespace Nubis;

namespace {
constexpr int USER = 100;
constexpr char BUNDLE[] = "com.example.notes";
constexpr char RECORD_TYPE[] = "note";
constexpr int PAGE_SIZE = 100;
constexpr int INVALID_CURSOR = 1008;

void ThrowIfError(const NBError &error, const std::string &what)
{
    if (error.HasError()) {
        throw std::system_error(ToErrorCode(error), what + ": " + error.GetErrorMsg());
    }
}

// Takes the notifications, on the thread of the listener.
class Subscriber {
public:
    Subscriber(std::shared_ptr<NubisNative> kit, std::shared_ptr<NBContainer> container, int wanted)
        : kit_(std::move(kit)), container_(std::move(container)), wanted_(wanted)
    {
        // What changes from now on. A program that keeps the cursor hears of what changed while it did not run, too.
        ThrowIfError(container_->GetPrivateDatabase()->GetStartCursor(RECORD_TYPE, cursor_), "asking for the cursor");
    }

    // Ready when as many notifications have come as were wanted; has an exception when something failed.
    std::future<void> Finished()
    {
        return finished_.get_future();
    }

    void OnNotification(const std::string &text)
    {
        Guarded([&] {
            NBRecordChangeEvent event;
            if (!Resolve(text, event)) {
                std::cout << "refused a notification that is not the service's" << std::endl;
                return;
            }
            if (event.bundleName != BUNDLE) {
                return;
            }
            std::cout << "notified of " << event.containerName << std::endl;
            FetchChanges();
            if (++count_ == wanted_) {
                Finish(nullptr);
            }
        });
    }

    // Too many were unread, and some are lost; what they were about is not.
    void OnGap()
    {
        Guarded([this] { FetchChanges(); });
    }

private:
    // Whoever may write to the user's runtime folder can send notifications: only the signature says whose it is.
    bool Resolve(const std::string &text, NBRecordChangeEvent &event)
    {
        Json::Value json;
        std::string problem;
        const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
        if (!reader->parse(text.data(), text.data() + text.size(), &json, &problem) ||
            kit_->VerifyNotificationFromJson(json).HasError()) {
            return false;
        }
        return !kit_->ResolveNotificationEvent(text, event).HasError();
    }

    // A notification says that something has changed; the cursor says what. So one that comes twice does no harm.
    void FetchChanges()
    {
        bool hasMore = true;
        while (hasMore) {
            const Async::ChangesResult page = Async::FetchDatabaseChanges(
                container_->GetPrivateDatabase(), RECORD_TYPE, {"title"}, PAGE_SIZE, cursor_)
                                                  .Start()
                                                  .get();
            if (page.error.GetServerErrorCode() == INVALID_CURSOR && !cursor_.empty()) {
                cursor_.clear(); // a backup was put back: everything may be different
                continue;
            }
            ThrowIfError(page.error, "reading changes");
            for (const NBRecord &record : page.records) {
                Print(record);
            }
            cursor_ = page.cursor;
            hasMore = page.hasMore;
        }
    }

    static void Print(const NBRecord &record)
    {
        NBFieldMap fields;
        record.GetRecordData(fields);
        std::string title;
        fields["title"].GetString(title);
        std::cout << "  " << record.GetRecordId() << (record.GetIsDelete() ? " was deleted" : " is now: " + title)
                  << std::endl;
    }

    template <typename Work>
    void Guarded(Work work)
    {
        if (isOver_) {
            return;
        }
        try {
            work();
        } catch (const std::exception &) {
            Finish(std::current_exception());
        }
    }

    void Finish(std::exception_ptr failure)
    {
        isOver_ = true;
        failure == nullptr ? finished_.set_value() : finished_.set_exception(failure);
    }

    const std::shared_ptr<NubisNative> kit_;
    const std::shared_ptr<NBContainer> container_;
    const int wanted_;
    std::string cursor_;
    int count_ = 0;
    bool isOver_ = false;
    std::promise<void> finished_;
};

// For an hour: a program that is killed leaves it behind for no longer. One that runs longer saves it again in time.
std::string Subscribe(const std::shared_ptr<NBContainer> &container)
{
    using namespace std::chrono;
    NBSubscription subscription;
    subscription.expirationTime =
        duration_cast<milliseconds>((system_clock::now() + hours(1)).time_since_epoch()).count();
    const Async::SubscriptionResult result = Async::SaveSubscription(container, subscription).Start().get();
    ThrowIfError(result.error, "subscribing");
    return result.id;
}

void Run(int wanted)
{
    auto kit = NubisNative::GetInstance(USER, NB_SYNC_DEMON_DATA);
    NBUserInfo user;
    ThrowIfError(kit->GetCloudUserInfo(user, false), "asking for the key that notifications are verified with");
    auto container = kit->GetDefaultContainer(BUNDLE);
    if (container == nullptr) {
        throw std::runtime_error("the service does not know com.example.notes: nubis catalogue apply notes.json");
    }
    Subscriber subscriber(kit, container, wanted);
    Host::EventListener listener(
        USER, kit->GetCloudSyncSaName(), [&](const std::string &text) { subscriber.OnNotification(text); },
        [&] { subscriber.OnGap(); });
    std::string problem;
    if (!listener.Start(problem)) {
        throw std::runtime_error("cannot listen: " + problem);
    }
    // Only now, so that nothing is notified before somebody listens.
    const std::string subscription = Subscribe(container);
    std::cout << "listening" << std::endl;
    std::future<void> finished = subscriber.Finished();
    finished.wait();
    ThrowIfError(Async::DeleteSubscription(container, subscription).Start().get().error, "ending the subscription");
    finished.get();
}
} // namespace

int main(int argc, char *argv[])
{
    try {
        Run(argc > 1 ? std::stoi(argv[1]) : 1);
        return 0;
    } catch (const std::exception &error) {
        std::cerr << "subscriber: " << error.what() << '\n';
        return 1;
    }
}
